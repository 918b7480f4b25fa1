# The Windows side: the real API, and what stands in front of it.
enable_language(RC)

vantrel_library(vantrel_platform
  serial_calls.cpp
  win32/files.cpp
  win32/kernel.cpp
  win32/keyboard.cpp
  win32/log.cpp
  win32/message_queue.cpp
  win32/serial.cpp
  win32/serial_port.cpp
  win32/sheet.cpp
  win32/shell.cpp
  win32/terminal.cpp
  win32/window.cpp)
# A source that knows the system's names and one that does not stay apart.
set_target_properties(vantrel_platform PROPERTIES UNITY_BUILD OFF)
target_compile_definitions(vantrel_platform PUBLIC _WIN32_WINNT=0x0601)
target_link_libraries(vantrel_platform PUBLIC comctl32 comdlg32 gdi32 shell32 user32 winmm)
