#include "platform/linux/windows/window_message.h"

#include <QByteArray>
#include <QJsonDocument>
#include <QJsonObject>

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

// The fields of an object from outside; Good says whether all that were asked for are of their kind.
struct Fields {
    QJsonObject Object;
    bool Good = true;

    QJsonValue Value(const char* key) const { return Object.value(QLatin1String(key)); }
    // A whole number; 0 when nothing is said.
    std::int64_t TakeNumber(const char* key) {
        const QJsonValue value = Value(key);
        const qint64 number = value.toInteger(0);
        Good = Good && (value.isUndefined() || (value.isDouble() && number == value.toInteger(1)));
        return number;
    }
    std::optional<std::u16string> TakeText(const char* key) {
        const QJsonValue value = Value(key);
        Good = Good && (value.isUndefined() || value.isNull() || value.isString());
        return value.isString() ? std::optional(value.toString().toStdU16String()) : std::nullopt;
    }
    std::vector<BYTE> TakeBytes(const char* key) {
        const QJsonValue value = Value(key);
        const auto bytes = QByteArray::fromBase64Encoding(value.toString().toLatin1(),
                                                          QByteArray::AbortOnBase64DecodingErrors);
        Good = Good && bytes && (value.isUndefined() || value.isNull() || value.isString());
        return {bytes.decoded.begin(), bytes.decoded.end()};
    }
};

QJsonDocument Parse(std::string_view text) {
    return QJsonDocument::fromJson(QByteArray::fromRawData(text.data(), static_cast<qsizetype>(text.size())));
}

// The empty reason: the message is one that other programs may send.
std::string TakeMessageName(const QJsonValue& value, WindowLine& line) {
    if (value.isDouble()) {
        line.Message = OpenSettingsRequest;
        return value.toInteger(0) == OpenSettingsRequest ? ""
                                                         : "this message is not taken from other programs";
    }
    if (value.toString() == QLatin1String(CopyDataName)) {
        line.Message = WM_COPYDATA;
    } else {
        line.Name = value.toString().toStdU16String();
    }
    return value.toString().isEmpty() ? "no message" : "";
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
    const QJsonDocument document = Parse(text);
    if (!document.isObject()) {
        reason = "not one JSON object a line";
        return std::nullopt;
    }
    Fields fields{document.object()};
    WindowLine line;
    if (const QJsonValue find = fields.Value(FindKey); !find.isUndefined()) {
        line.What = WindowLine::Kind::Find;
        fields = {find.toObject(), find.isObject()};
    } else {
        reason = TakeMessageName(fields.Value(MessageKey), line);
    }
    line.ClassName = fields.TakeText("class");
    line.Title = fields.TakeText("title");
    if (line.What == WindowLine::Kind::Message) {
        line.Window = static_cast<std::uint64_t>(fields.TakeNumber("window"));
        line.wParam = static_cast<WPARAM>(fields.TakeNumber("wParam"));
        line.lParam = static_cast<LPARAM>(fields.TakeNumber("lParam"));
        line.DataNumber = static_cast<std::uint64_t>(fields.TakeNumber("number"));
        line.DataName = fields.TakeText("name").value_or(u"");
        line.Data = fields.TakeBytes("data");
    }
    if (!fields.Good) {
        reason = "a field is not of its kind";
    }
    return reason.empty() ? std::optional(line) : std::nullopt;
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
    Fields fields{Parse(text).object()};
    AnswerLine answer;
    answer.Window = static_cast<std::uint64_t>(fields.TakeNumber("window"));
    answer.Result = fields.TakeNumber("result");
    return answer;
}

}  // namespace layer
