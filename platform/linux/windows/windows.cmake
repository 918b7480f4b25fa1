# Windows, messages, dialogs, menus and the shell around them, on Qt; sockets between programs.
find_package(Qt6 REQUIRED COMPONENTS Widgets)
pkg_check_modules(VANTREL_X11 REQUIRED IMPORTED_TARGET x11)

vantrel_library(vantrel_platform_windows
  linux/windows/control_classes.cpp
  linux/windows/cursors.cpp
  linux/windows/dialog_widget.cpp
  linux/windows/dialogs.cpp
  linux/windows/images.cpp
  linux/windows/listener.cpp
  linux/windows/menus.cpp
  linux/windows/message_box.cpp
  linux/windows/message_loop.cpp
  linux/windows/other_programs.cpp
  linux/windows/program_resources.cpp
  linux/windows/program_socket.cpp
  linux/windows/registered_messages.cpp
  linux/windows/screen.cpp
  linux/windows/send_message.cpp
  linux/windows/start_windows.cpp
  linux/windows/timers.cpp
  linux/windows/tray_icon.cpp
  linux/windows/user_window.cpp
  linux/windows/watchdog.cpp
  linux/windows/window_calls.cpp
  linux/windows/window_message.cpp
  linux/windows/window_object.cpp
  linux/windows/window_table.cpp)
include(linux/controls/controls.cmake)
# X11's names would change Qt's; the others have names of their own that are others' as well.
vantrel_by_themselves(linux/windows/screen.cpp linux/windows/menus.cpp
  linux/controls/sheet_window.cpp linux/controls/tree_widget.cpp linux/controls/updown_control.cpp)
vantrel_replaceable(linux/windows/timers.cpp linux/windows/cursors.cpp)
# Qt's headers take longer than all else.
target_precompile_headers(vantrel_platform_windows PRIVATE
  <functional> <map> <memory> <string> <vector>
  <QApplication> <QLabel> <QLineEdit> <QPainter> <QPushButton> <QTreeWidget> <QWidget>)
target_link_libraries(vantrel_platform_windows
  PUBLIC vantrel_platform_kernel vantrel_resource_file vantrel_resources Qt6::Widgets
  PRIVATE PkgConfig::VANTREL_X11 PkgConfig::SYSTEMD)

# Everything that the system's sources are linked with; linux/main.cpp goes into each program.
add_library(vantrel_platform INTERFACE)
target_link_libraries(vantrel_platform INTERFACE
  vantrel_platform_windows vantrel_platform_kernel vantrel_platform_serial)
