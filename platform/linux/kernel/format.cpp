#include <array>
#include <cstdarg>
#include <string_view>

#include "platform/text.h"

namespace {

constexpr int MaxText = 1024;  // with the ending zero

class Output {
  public:
    explicit Output(LPWSTR to) : to_(to) {}
    void Put(WCHAR character) {
        if (length_ < MaxText - 1) {
            to_[length_++] = character;
        }
    }
    void Fill(WCHAR character, int count) {
        for (; count > 0 && length_ < MaxText - 1; --count) {
            Put(character);
        }
    }
    int Finish() {
        to_[length_] = 0;
        return length_;
    }

  private:
    LPWSTR to_;
    int length_ = 0;
};

struct Field {
    bool Left = false;
    bool Zeros = false;
    bool Prefix = false;
    int Width = 0;
    int Precision = -1;
};

int ReadNumber(LPCWSTR& format) {
    int number = 0;
    for (; *format >= u'0' && *format <= u'9'; ++format) {
        if (number < MaxText) {
            number = number * 10 + (*format - u'0');
        }
    }
    return number;
}

Field ReadField(LPCWSTR& format) {
    Field field;
    for (;; ++format) {
        if (*format == u'-') {
            field.Left = true;
        } else if (*format == u'0') {
            field.Zeros = true;
        } else if (*format == u'#') {
            field.Prefix = true;
        } else {
            break;
        }
    }
    field.Width = ReadNumber(format);
    if (*format == u'.') {
        ++format;
        field.Precision = ReadNumber(format);
    }
    return field;
}

void PutText(Output& output, const Field& field, std::u16string_view text) {
    const int pad = field.Width - static_cast<int>(text.size());
    if (!field.Left) {
        output.Fill(field.Zeros ? u'0' : u' ', pad);
    }
    for (const WCHAR character : text) {
        output.Put(character);
    }
    if (field.Left) {
        output.Fill(u' ', pad);
    }
}

void PutNumber(Output& output, const Field& field, bool negative, DWORD magnitude, DWORD base, bool upper) {
    std::array<WCHAR, 12> digits{};
    int count = 0;
    for (; magnitude != 0 || count == 0; magnitude /= base) {
        const DWORD digit = magnitude % base;
        const DWORD letter = (upper ? u'A' : u'a') + digit - 10;
        digits[static_cast<std::size_t>(count++)] = static_cast<WCHAR>(digit < 10 ? u'0' + digit : letter);
    }
    const bool prefix = field.Prefix && base == 16;
    const int sign = negative ? 1 : 0;
    const int marks = sign + (prefix ? 2 : 0);
    int zeros = field.Precision > count ? field.Precision - count : 0;
    if (field.Zeros && !field.Left && field.Precision < 0 && field.Width > count + marks) {
        zeros = field.Width - count - marks;
    }
    const int pad = field.Width - count - zeros - marks;
    if (!field.Left) {
        output.Fill(u' ', pad);
    }
    if (negative) {
        output.Put(u'-');
    }
    if (prefix) {
        output.Put(u'0');
        output.Put(upper ? u'X' : u'x');
    }
    output.Fill(u'0', zeros);
    while (count > 0) {
        output.Put(digits[static_cast<std::size_t>(--count)]);
    }
    if (field.Left) {
        output.Fill(u' ', pad);
    }
}

}  // namespace

int wsprintfW(LPWSTR to, LPCWSTR format, ...) {
    va_list arguments;
    va_start(arguments, format);
    Output output(to);
    while (*format != 0) {
        if (*format != u'%') {
            output.Put(*format++);
            continue;
        }
        ++format;
        const Field field = ReadField(format);
        // Numbers are 32 bits wide with and without the mark, as on the platform.
        if (*format == u'l') {
            ++format;
        }
        switch (*format) {
            case u'd':
            case u'i': {
                const int value = va_arg(arguments, int);
                const auto bits = static_cast<DWORD>(value);
                PutNumber(output, field, value < 0, value < 0 ? 0u - bits : bits, 10, false);
                break;
            }
            case u'u':
                PutNumber(output, field, false, va_arg(arguments, DWORD), 10, false);
                break;
            case u'x':
            case u'X':
                PutNumber(output, field, false, va_arg(arguments, DWORD), 16, *format == u'X');
                break;
            case u'c': {
                const auto character = static_cast<WCHAR>(va_arg(arguments, int));
                PutText(output, field, {&character, 1});
                break;
            }
            case u's': {
                const WCHAR* text = va_arg(arguments, LPCWSTR);
                if (text == nullptr) {
                    text = u"(null)";
                }
                std::size_t length = 0;
                const auto most = static_cast<std::size_t>(field.Precision < 0 ? MaxText : field.Precision);
                while (length < most && text[length] != 0) {
                    ++length;
                }
                PutText(output, field, {text, length});
                break;
            }
            case 0:
                continue;  // a lone percent sign at the end gives nothing
            default:
                output.Put(*format);
                break;
        }
        ++format;
    }
    va_end(arguments);
    return output.Finish();
}
