// A named mutex is a lock on a file of the terminal folder: the kernel gives it back whatever ends the
// program.
#include <fcntl.h>
#include <sys/file.h>

#include <string>

#include "platform/kernel.h"
#include "platform/linux/kernel/object.h"
#include "platform/linux/kernel/posix.h"
#include "platform/linux/kernel/terminal.h"
#include "platform/linux/kernel/thread.h"

namespace layer {

namespace {

class NamedMutex : public Object {
  public:
    explicit NamedMutex(Descriptor file) : file_(std::move(file)) {}

    DWORD Wait(DWORD milliseconds) override {
        const bool had = LockFile(file_.Number(), LOCK_EX, std::chrono::milliseconds(milliseconds));
        return had ? WAIT_OBJECT_0 : WAIT_TIMEOUT;
    }

  private:
    const Descriptor file_;
};

}  // namespace

}  // namespace layer

HANDLE CreateMutexW(LPSECURITY_ATTRIBUTES, BOOL initialOwner, LPCWSTR name) {
    layer::ParkAtEnd();
    const std::string narrow = name != nullptr ? layer::ToUtf8(name) : std::string();
    if (initialOwner || narrow.empty() || narrow.find('/') != std::string::npos) {
        return nullptr;
    }
    const std::string path = layer::TerminalFolder() + "/" + narrow + ".lock";
    layer::Descriptor file(open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0600));
    return file ? layer::NewHandle(std::make_shared<layer::NamedMutex>(std::move(file))) : nullptr;
}
