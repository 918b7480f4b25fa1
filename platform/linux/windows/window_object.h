// What a window handle stands for, on Qt widgets. Everything here belongs to the main thread.
//
// Every window of the program, controls included, is a WindowObject with a number (HWND), a Qt widget and a
// Message function. Messages are function calls: the platform's calls look the handle up and call Message.
// User input goes from Qt to the widgets, whose objects tell their parents with WM_COMMAND or WM_NOTIFY.
#pragma once

#include <QFont>
#include <QPoint>
#include <QRect>
#include <QWidget>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "platform/window.h"

namespace layer {

class WindowObject;
using WindowPtr = std::shared_ptr<WindowObject>;

// Styles of windows and controls that only templates name.
inline constexpr DWORD StyleChild = 0x40000000;
inline constexpr DWORD StyleDisabled = 0x08000000;
inline constexpr DWORD StyleCaption = 0x00C00000;
inline constexpr DWORD StyleSystemMenu = 0x00080000;
inline constexpr DWORD StyleTabStop = 0x00010000;

inline constexpr DWORD DialogCentred = 0x0800;

inline constexpr DWORD StaticKind = 0x1F;
inline constexpr DWORD StaticCentred = 1, StaticIcon = 3;
inline constexpr DWORD StaticNoPrefix = 0x80;

inline constexpr DWORD ButtonKind = 0x0F;
inline constexpr DWORD ButtonDefault = 1;

inline constexpr DWORD EditMultiLine = 0x0004;
inline constexpr DWORD EditNumber = 0x2000;

// What is known of a window when it is made.
struct WindowInit {
    WindowObject* Parent = nullptr;  // of a child window; the owner of a top-level one; or null
    bool Child = false;              // lies inside Parent's client area
    std::u16string ClassName;        // as given or named by the template ("Button", "Edit", "Static", ...)
    std::u16string Text;             // caption or contents
    int Id = 0;                      // control identifier; 0xFFFF for one that is never asked for
    DWORD Style = 0;
    QRect Place;        // pixels: in Parent's client area for a child, on the screen otherwise
    WORD Resource = 0;  // icon that a static control shows, or 0
};

// Life: Adopt gives the handle; Destroy takes it away, sends WM_DESTROY, hides the widget and has it deleted
// when the running notification has returned to the event loop. The object lives until then, so callbacks of
// its widget may use it; they do nothing once Gone().
class WindowObject : public std::enable_shared_from_this<WindowObject> {
  public:
    explicit WindowObject(const WindowInit& init);
    virtual ~WindowObject();
    WindowObject(const WindowObject&) = delete;
    WindowObject& operator=(const WindowObject&) = delete;

    HWND Handle() const { return handle_; }
    bool Gone() const { return gone_; }
    // The parent or owner; null when there is none or it has gone.
    WindowObject* Parent() const;
    bool IsChild() const { return child_; }
    int Id() const { return id_; }
    const std::u16string& ClassName() const { return className_; }
    // Children in the order they were made, which is the tab order.
    const std::vector<WindowPtr>& Children() const { return children_; }
    WindowObject* FindChild(int id) const;  // first match, null when there is none

    // The outermost widget, and the one that client coordinates count from and children are put on.
    QWidget* Widget() const { return widget_; }
    QWidget* Client() const { return client_; }

    // Handles a message; the base class knows the defaults (WM_CLOSE destroys).
    virtual LRESULT Message(UINT message, WPARAM wParam, LPARAM lParam);
    virtual LRESULT Default(UINT message, WPARAM wParam, LPARAM lParam);

    virtual std::u16string Text() const { return text_; }
    virtual void SetText(std::u16string text);
    virtual DWORD Style() const { return style_; }
    virtual void SetStyle(DWORD style) { style_ = style; }
    virtual void SetPlace(const QRect& place);  // as WindowInit::Place
    virtual void SetVisible(bool visible);
    virtual bool Visible() const;
    virtual void Activate();  // gives it the input focus
    // Whether having the focus is its own doing; false for a window that was shown without taking it.
    virtual bool TakesFocus() const { return true; }

    // Notifications to the parent. The object may be Gone() afterwards.
    void Command(WORD code);
    LRESULT Notify(NMHDR& header, UINT code);  // fills in the header; it may be the start of a larger record

  protected:
    // Derived classes give their widget once, in their constructor; client is the widget itself when left
    // out. The widget's parent must be Parent()->Client() for a child and may be Parent()'s window otherwise.
    void SetWidget(QWidget* widget, QWidget* client = nullptr);
    // Has WM_SIZE sent whenever the client's size changes; after SetWidget.
    void ReportSizes();
    // WM_DESTROY goes to the window before its children are taken away; after it, OnGone.
    virtual void OnGone() {}

  private:
    friend HWND Adopt(const WindowPtr& window);
    friend void Destroy(WindowObject& window);
    LRESULT Tell(UINT message, WPARAM wParam, LPARAM lParam);  // the parent

    HWND handle_ = nullptr;
    std::weak_ptr<WindowObject> parent_;
    std::vector<WindowPtr> children_;  // child windows only
    QWidget* widget_ = nullptr;
    QWidget* client_ = nullptr;
    std::u16string className_, text_;
    int id_;
    DWORD style_;
    bool child_;
    bool going_ = false, gone_ = false;
};

// Gives the window a handle; a child joins its parent's children. Does not show it.
HWND Adopt(const WindowPtr& window);
// Destroys the window, the windows it owns and its children. Twice does no harm.
void Destroy(WindowObject& window);
// Hides the window. Where it had the input focus, its owner gets it: without a window manager nobody else
// would hand it on.
void HideAndGiveFocusBack(WindowObject& window);
// The window of a handle; null for anything else, windows of other programs included.
WindowPtr FindWindowObject(HWND handle);
// The window that the widget is, or is part of; null for widgets of Qt's own.
WindowPtr WindowOf(const QWidget* widget);
// All top-level windows, the oldest first.
std::vector<WindowPtr> TopLevelWindows();
// Sends a message to a window of this program; 0 when there is none.
LRESULT Send(HWND window, UINT message, WPARAM wParam, LPARAM lParam);

// Makes a child dialog (a page) from a template inside parent's client area and sends it WM_INITDIALOG. Null
// when the template is missing or one of its controls cannot be made. It is not shown. WM_SIZE goes to its
// procedure whenever its client area changes.
WindowPtr MakePageDialog(WORD dialogTemplate, WindowObject& parent, DLGPROC procedure, LPARAM parameter);

// Takes and dispatches messages until `done` holds. False when WM_QUIT has ended the loop; the quit stays
// pending for the loops around it. Everything modal waits with this one; a dialog of Qt is opened with open()
// or show(), never with exec().
bool RunModalLoop(const std::function<bool()>& done);
// Whether WM_QUIT is pending.
bool QuitPending();

// What GetMessagePos answers from now on: screen coordinates of the message being handled. A control sets it
// before a notification about a position (NM_CLICK).
void SetMessagePosition(const QPoint& screen);

// Whether something frames and places top-level windows. Where nothing does (frame buffer, headless, bare X)
// a window with a caption draws it itself.
bool HasWindowManager();
// The part of the screen that windows may fill: the screen without panels and without the strip of the
// stand-in icon.
QRect WorkArea();
// Shows what the widget has to show at once, while the main thread does not return to its messages, and
// dispatches nothing else.
void PaintNow(QWidget* widget);

// A window of a registered class, whose messages go to a window procedure.
class UserWindow : public WindowObject {
  public:
    UserWindow(const WindowInit& init, WNDPROC procedure);
    LRESULT Message(UINT message, WPARAM wParam, LPARAM lParam) override;
    void SetVisible(bool visible) override;
    void Activate() override;
    bool TakesFocus() const override { return takesFocus_; }

  private:
    WNDPROC procedure_;
    bool takesFocus_ = false;  // until somebody brings it to the foreground, or the user does
};

// Has the window told WM_CLOSE, as the button of its frame does.
void RequestClose(WindowObject& window);

// Makes and adopts a control of the class that `init` names, in whatever letter case, with its place, text
// and style; null for an unknown class.
WindowPtr MakeControl(const WindowInit& init);

// Those with files of their own.
WindowPtr MakeTreeControl(const WindowInit& init);
WindowPtr MakeUpDownControl(const WindowInit& init);
WindowPtr MakeProgressControl(const WindowInit& init);

}  // namespace layer
