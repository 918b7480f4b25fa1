# Serial ports and synthetic keys.
pkg_check_modules(VANTREL_KEYS REQUIRED IMPORTED_TARGET GLOBAL x11 xtst xi xkbcommon libevdev wayland-client)

# The protocol's code, made from its description.
pkg_get_variable(WAYLAND_SCANNER wayland-scanner wayland_scanner)
set(virtual_keyboard ${CMAKE_CURRENT_SOURCE_DIR}/linux/keyboard/virtual-keyboard-unstable-v1.xml)
foreach(part "client-header;h" "private-code;c")
  list(GET part 0 what)
  list(GET part 1 extension)
  set(made ${CMAKE_CURRENT_BINARY_DIR}/protocol/virtual-keyboard-unstable-v1.${extension})
  add_custom_command(OUTPUT ${made}
    COMMAND ${CMAKE_COMMAND} -E make_directory ${CMAKE_CURRENT_BINARY_DIR}/protocol
    COMMAND ${WAYLAND_SCANNER} --strict ${what} ${virtual_keyboard} ${made}
    DEPENDS ${virtual_keyboard} VERBATIM)
  list(APPEND protocol_code ${made})
endforeach()
add_library(vantrel_virtual_keyboard STATIC ${protocol_code})
target_include_directories(vantrel_virtual_keyboard SYSTEM PUBLIC ${CMAKE_CURRENT_BINARY_DIR}/protocol)
target_link_libraries(vantrel_virtual_keyboard PUBLIC PkgConfig::VANTREL_KEYS)

vantrel_library(vantrel_platform_serial
  linux/keyboard/choose_keyboard.cpp
  linux/keyboard/keyboard.cpp
  linux/keyboard/keyboard_map.cpp
  linux/keyboard/keyboard_trace.cpp
  linux/keyboard/keyboard_uinput.cpp
  linux/keyboard/keyboard_wayland.cpp
  linux/keyboard/keyboard_xtest.cpp
  linux/keyboard/stroke_keyboard.cpp
  linux/serial/receive_queue.cpp
  linux/serial/serial.cpp
  linux/serial/tty.cpp
  linux/serial/tty_line.cpp
  linux/serial/tty_transfer.cpp
  linux/serial/wire_trace.cpp
  serial_calls.cpp
  linux/keyboard/us_keyboard.cpp
  linux/keyboard/wayland_connection.cpp)
# Keyboards name their own parts alike.
vantrel_by_themselves(linux/keyboard/keyboard_wayland.cpp linux/keyboard/keyboard_xtest.cpp
  linux/keyboard/wayland_connection.cpp)
# Files open ports and ports wait through the kernel's objects: each library needs the other.
target_link_libraries(vantrel_platform_serial PUBLIC vantrel_platform_kernel PRIVATE PkgConfig::VANTREL_KEYS vantrel_virtual_keyboard)
