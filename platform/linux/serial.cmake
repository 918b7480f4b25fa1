# Serial ports and synthetic keys.
pkg_check_modules(VANTREL_KEYS REQUIRED IMPORTED_TARGET GLOBAL x11 xtst xi)

vantrel_library(vantrel_platform_serial
  linux/held_keys.cpp
  linux/keyboard.cpp
  linux/keyboard_map.cpp
  linux/keyboard_trace.cpp
  linux/keyboard_xtest.cpp
  linux/line_marks.cpp
  linux/receive_queue.cpp
  linux/serial.cpp
  linux/tty.cpp
  linux/tty_line.cpp
  linux/us_keyboard.cpp
  linux/wake_fd.cpp
  linux/x_connection.cpp)
# Files open ports and ports wait through the kernel's objects: each library needs the other.
target_link_libraries(vantrel_platform_serial PUBLIC vantrel_platform_kernel PRIVATE PkgConfig::VANTREL_KEYS)
