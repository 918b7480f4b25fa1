# Serial ports and synthetic keys.
pkg_check_modules(VANTREL_KEYS REQUIRED IMPORTED_TARGET GLOBAL x11 xtst xi)

vantrel_library(vantrel_platform_serial
  linux/keyboard/held_keys.cpp
  linux/keyboard/keyboard.cpp
  linux/keyboard/keyboard_map.cpp
  linux/keyboard/keyboard_trace.cpp
  linux/keyboard/keyboard_xtest.cpp
  linux/serial/line_marks.cpp
  linux/serial/receive_queue.cpp
  linux/serial/serial.cpp
  linux/serial/tty.cpp
  linux/serial/tty_line.cpp
  linux/keyboard/us_keyboard.cpp
  linux/kernel/wake_fd.cpp
  linux/keyboard/x_connection.cpp)
# Files open ports and ports wait through the kernel's objects: each library needs the other.
target_link_libraries(vantrel_platform_serial PUBLIC vantrel_platform_kernel PRIVATE PkgConfig::VANTREL_KEYS)
