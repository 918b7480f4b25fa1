#include "tests/e2e/accessibility.h"

#include <gtest/gtest.h>

#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusObjectPath>
#include <csignal>
#include <cstdlib>

namespace {

constexpr int Patience = 1000;  // milliseconds
constexpr const char* Bus = "vantrel-accessibility";
const QString Root = "/org/a11y/atspi/accessible/root";
const QString Interface = "org.a11y.atspi.";

enum State { Checked = 4, Focused = 12, Selected = 23, Showing = 25 };  // bits of the interface's set

struct Reference {
    QString Program;
    QString Path;
};

QVariantList Ask(const Reference& object, const QString& interface, const QString& method,
                 const QVariantList& arguments = {}) {
    QDBusMessage call = QDBusMessage::createMethodCall(object.Program, object.Path, interface, method);
    call.setArguments(arguments);
    return QDBusConnection(Bus).call(call, QDBus::Block, Patience).arguments();
}

QString AskText(const Reference& object, const QString& interface, const QString& method,
                const QVariantList& arguments = {}) {
    const QVariantList answer = Ask(object, interface, method, arguments);
    return answer.isEmpty() ? QString() : answer.front().toString();
}

std::vector<Reference> PartsOf(const Reference& object) {
    std::vector<Reference> parts;
    const QVariantList answer = Ask(object, Interface + "Accessible", "GetChildren");
    if (!answer.isEmpty() && answer.front().canConvert<QDBusArgument>()) {
        const auto list = answer.front().value<QDBusArgument>();
        for (list.beginArray(); !list.atEnd();) {
            Reference part;
            QDBusObjectPath path;
            list.beginStructure();
            list >> part.Program >> path;
            list.endStructure();
            part.Path = path.path();
            parts.push_back(part);
        }
    }
    return parts;
}

Accessible Read(const Reference& object) {
    Accessible read;
    read.Role = AskText(object, Interface + "Accessible", "GetRoleName").toStdString();
    const QVariantList name =
        Ask(object, "org.freedesktop.DBus.Properties", "Get", {Interface + "Accessible", "Name"});
    if (!name.isEmpty()) {
        read.Name = name.front().value<QDBusVariant>().variant().toString().toStdString();
    }
    if (read.Role == "text" || read.Role == "spin button") {
        read.Text = AskText(object, Interface + "Text", "GetText", {0, -1}).toStdString();
    }
    const QVariantList states = Ask(object, Interface + "Accessible", "GetState");
    QList<uint> words;
    if (!states.isEmpty() && states.front().canConvert<QDBusArgument>()) {
        states.front().value<QDBusArgument>() >> words;
    }
    const auto has = [&](State state) { return !words.isEmpty() && (words.front() >> state & 1u) != 0; };
    read.Checked = has(Checked);
    read.Selected = has(Selected);
    read.Focused = has(Focused);
    if (!has(Showing)) {
        read.Role.clear();
        return read;
    }
    for (const Reference& part : PartsOf(object)) {
        Accessible seen = Read(part);
        if (!seen.Role.empty()) {
            read.Parts.push_back(std::move(seen));
        }
    }
    return read;
}

}  // namespace

void Accessible::Visit(const std::function<void(const Accessible&)>& look) const {
    look(*this);
    for (const Accessible& part : Parts) {
        part.Visit(look);
    }
}

std::string Accessible::Outline(int depth) const {
    std::string text = std::string(static_cast<std::size_t>(2 * depth), ' ') + Role + " \"" + Name + "\"";
    text += (Text.empty() ? "" : " holds \"" + Text + "\"") + (Checked ? " checked" : "") +
            (Selected ? " selected" : "") + (Focused ? " focused" : "") + "\n";
    for (const Accessible& part : Parts) {
        text += part.Outline(depth + 1);
    }
    return text;
}

AccessibilityBus::AccessibilityBus()
    : session_(std::make_unique<ChildProcess>(
          std::vector<std::string>{"setpriv", "--pdeathsig", "TERM", "--", "/bin/sh", "-c",
                                   "exec dbus-daemon --session --nofork --print-address 2>/dev/null"})) {
    const std::string session = session_->ReadLine().value_or("");
    setenv("DBUS_SESSION_BUS_ADDRESS", session.c_str(), 1);
    setenv("QT_LINUX_ACCESSIBILITY_ALWAYS_ON", "1", 1);
    // The question starts the bus, which goes with the session.
    QDBusConnection::connectToBus(QString::fromStdString(session), Bus);
    const QVariantList address = QDBusConnection(Bus)
                                     .call(QDBusMessage::createMethodCall("org.a11y.Bus", "/org/a11y/bus",
                                                                          "org.a11y.Bus", "GetAddress"))
                                     .arguments();
    QDBusConnection::disconnectFromBus(Bus);
    QDBusConnection::connectToBus(address.isEmpty() ? QString() : address.front().toString(), Bus);
    EXPECT_TRUE(QDBusConnection(Bus).isConnected()) << "no accessibility bus";
}

AccessibilityBus::~AccessibilityBus() {
    QDBusConnection::disconnectFromBus(Bus);
    session_->Signal(SIGTERM);
    session_->Wait(2000);
}

std::vector<Accessible> AccessibilityBus::Windows() {
    std::vector<Accessible> windows;
    for (const Reference& program : PartsOf({"org.a11y.atspi.Registry", Root})) {
        for (const Reference& window : PartsOf(program)) {
            Accessible seen = Read(window);
            if (!seen.Role.empty()) {
                windows.push_back(std::move(seen));
            }
        }
    }
    return windows;
}
