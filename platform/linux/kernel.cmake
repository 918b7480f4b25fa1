# Clock, objects, threads, waits, files, queues, sound and text, behind the platform's names.

pkg_check_modules(CANBERRA REQUIRED IMPORTED_TARGET libcanberra)

vantrel_library(vantrel_platform_kernel
  linux/canberra.cpp
  linux/clock.cpp
  linux/disk_file.cpp
  linux/end.cpp
  linux/events.cpp
  linux/files.cpp
  linux/format.cpp
  linux/host_path.cpp
  linux/install_sounds.cpp
  linux/local_object.cpp
  linux/manual_clock.cpp
  linux/message_queue.cpp
  linux/named_event.cpp
  linux/objects.cpp
  linux/shared_names.cpp
  linux/sound.cpp
  linux/terminal.cpp
  linux/text.cpp
  linux/threads.cpp
  linux/utf.cpp
  linux/vibrator.cpp)
# Files and serial ports share CreateFileW and ReadFile, so the two libraries need each other.
target_link_libraries(vantrel_platform_kernel
  PUBLIC Threads::Threads vantrel_resources $<TARGET_NAME_IF_EXISTS:vantrel_platform_serial>
  PRIVATE PkgConfig::CANBERRA)
