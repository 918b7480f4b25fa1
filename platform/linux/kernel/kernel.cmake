# Clock, objects, threads, waits, files, queues, sound and text, behind the platform's names.

find_package(Qt6 REQUIRED COMPONENTS Core)
pkg_check_modules(SYSTEMD REQUIRED IMPORTED_TARGET libsystemd)
pkg_check_modules(CANBERRA REQUIRED IMPORTED_TARGET libcanberra)

vantrel_library(vantrel_platform_kernel
  linux/kernel/canberra.cpp
  linux/kernel/clock.cpp
  linux/kernel/files.cpp
  linux/kernel/log.cpp
  linux/kernel/message_queue.cpp
  linux/kernel/named_objects.cpp
  linux/kernel/objects.cpp
  linux/kernel/posix.cpp
  linux/kernel/shared_names.cpp
  linux/kernel/sound.cpp
  linux/kernel/terminal.cpp
  linux/kernel/text.cpp
  linux/kernel/threads.cpp
  linux/kernel/vibrator.cpp)
vantrel_replaceable(linux/kernel/sound.cpp)
# Files and serial ports share CreateFileW and ReadFile, so the two libraries need each other.
target_link_libraries(vantrel_platform_kernel
  PUBLIC Threads::Threads vantrel_resources $<TARGET_NAME_IF_EXISTS:vantrel_platform_serial>
  PRIVATE PkgConfig::CANBERRA PkgConfig::SYSTEMD Qt6::Core)
