#include "platform/linux/windows/window_message.h"

#include <QByteArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <cmath>

namespace layer {

namespace {

constexpr char FindKey[] = "find";
constexpr char MessageKey[] = "message";
constexpr char CopyDataName[] = "WM_COPYDATA";

QString Text(const std::u16string& text) {
    return QString::fromStdU16String(text);
}

QJsonValue Number(std::uint64_t number) {
    return QJsonValue(static_cast<qint64>(number));
}

std::string Line(const QJsonObject& object) {
    return QJsonDocument(object).toJson(QJsonDocument::Compact).toStdString() + "\n";
}

// A whole number, or nothing said (0); false for anything else.
bool TakeNumber(const QJsonObject& object, const char* key, std::int64_t& number) {
    const QJsonValue value = object.value(QLatin1String(key));
    if (value.isUndefined()) {
        number = 0;
        return true;
    }
    constexpr qint64 odd = -0x7FFFFFFFFFFFFFFF;
    number = value.toInteger(odd);
    return value.isDouble() && (number != odd || value.toInteger(1) == odd);
}

bool TakeText(const QJsonObject& object, const char* key, std::optional<std::u16string>& text) {
    const QJsonValue value = object.value(QLatin1String(key));
    if (value.isUndefined() || value.isNull()) {
        return true;
    }
    if (value.isString()) {
        text = value.toString().toStdU16String();
    }
    return value.isString();
}

bool TakeTarget(const QJsonObject& object, WindowLine& line) {
    return TakeText(object, "class", line.ClassName) && TakeText(object, "title", line.Title);
}

bool TakeData(const QJsonObject& object, WindowLine& line) {
    std::optional<std::u16string> name;
    std::int64_t number = 0;
    const QJsonValue data = object.value(QLatin1String("data"));
    if (!TakeNumber(object, "number", number) || !TakeText(object, "name", name) ||
        !(data.isUndefined() || data.isString())) {
        return false;
    }
    const auto bytes =
        QByteArray::fromBase64Encoding(data.toString().toLatin1(), QByteArray::AbortOnBase64DecodingErrors);
    if (!bytes) {
        return false;
    }
    line.DataNumber = static_cast<std::uint64_t>(number);
    line.DataName = name.value_or(u"");
    line.Data.assign(bytes.decoded.begin(), bytes.decoded.end());
    return true;
}

bool TakeMessageName(const QJsonValue& value, WindowLine& line, std::string& reason) {
    if (value.isDouble()) {
        line.Message = OpenSettingsRequest;
        reason = "this message is not taken from other programs";
        return value.toInteger(0) == OpenSettingsRequest;
    }
    if (!value.isString() || value.toString().isEmpty()) {
        reason = "no message";
        return false;
    }
    if (value.toString() == QLatin1String(CopyDataName)) {
        line.Message = WM_COPYDATA;
    } else {
        line.Name = value.toString().toStdU16String();
    }
    return true;
}

}  // namespace

std::string WriteLine(const WindowLine& line) {
    QJsonObject target;
    if (line.ClassName) {
        target["class"] = Text(*line.ClassName);
    }
    if (line.Title) {
        target["title"] = Text(*line.Title);
    }
    if (line.What == WindowLine::Kind::Find) {
        return Line(QJsonObject{{FindKey, target}});
    }
    QJsonObject object = target;
    if (line.Window != 0) {
        object["window"] = Number(line.Window);
    }
    if (line.Message == WM_COPYDATA) {
        object[MessageKey] = CopyDataName;
        object["number"] = Number(line.DataNumber);
        if (!line.DataName.empty()) {
            object["name"] = Text(line.DataName);
        }
        const auto size = static_cast<qsizetype>(line.Data.size());
        const auto bytes = QByteArray::fromRawData(reinterpret_cast<const char*>(line.Data.data()), size);
        object["data"] = QString::fromLatin1(bytes.toBase64());
    } else if (line.Message != 0) {
        object[MessageKey] = static_cast<int>(line.Message);
    } else {
        object[MessageKey] = Text(line.Name);
    }
    object["wParam"] = Number(line.wParam);
    object["lParam"] = Number(static_cast<std::uint64_t>(line.lParam));
    return Line(object);
}

std::optional<WindowLine> ReadLine(std::string_view text, std::string& reason) {
    const QJsonDocument document =
        QJsonDocument::fromJson(QByteArray::fromRawData(text.data(), static_cast<qsizetype>(text.size())));
    reason = "not one JSON object a line";
    if (!document.isObject()) {
        return std::nullopt;
    }
    const QJsonObject object = document.object();
    WindowLine line;
    reason = "a field is not of its kind";
    if (const QJsonValue find = object.value(QLatin1String(FindKey)); !find.isUndefined()) {
        line.What = WindowLine::Kind::Find;
        return find.isObject() && TakeTarget(find.toObject(), line) ? std::optional(line) : std::nullopt;
    }
    std::int64_t window = 0, wParam = 0, lParam = 0;
    if (!TakeTarget(object, line) || !TakeNumber(object, "window", window) ||
        !TakeNumber(object, "wParam", wParam) || !TakeNumber(object, "lParam", lParam) ||
        !TakeData(object, line) || !TakeMessageName(object.value(QLatin1String(MessageKey)), line, reason)) {
        return std::nullopt;
    }
    line.Window = static_cast<std::uint64_t>(window);
    line.wParam = static_cast<WPARAM>(wParam);
    line.lParam = static_cast<LPARAM>(lParam);
    return line;
}

std::string WriteAnswer(const AnswerLine& answer, WindowLine::Kind kind) {
    if (!answer.Refusal.empty()) {
        return Line(QJsonObject{{"error", QString::fromStdString(answer.Refusal)}});
    }
    if (kind == WindowLine::Kind::Find) {
        return Line(QJsonObject{{"window", Number(answer.Window)}});
    }
    return Line(QJsonObject{{"result", static_cast<qint64>(answer.Result)}});
}

AnswerLine ReadAnswer(std::string_view text) {
    const QJsonObject object =
        QJsonDocument::fromJson(QByteArray::fromRawData(text.data(), static_cast<qsizetype>(text.size())))
            .object();
    AnswerLine answer;
    std::int64_t window = 0;
    if (TakeNumber(object, "window", window)) {
        answer.Window = static_cast<std::uint64_t>(window);
    }
    if (!TakeNumber(object, "result", answer.Result)) {
        answer.Result = 0;
    }
    answer.Refusal = object.value(QLatin1String("error")).toString().toStdString();
    return answer;
}

}  // namespace layer
