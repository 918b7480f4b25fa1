#include "platform/linux/windows/program_resources.h"

#include <algorithm>

#include "platform/linux/kernel/thread.h"
#include "platform/linux/resources/embedded.h"

namespace layer {

namespace {

resource::Bytes Others;

}  // namespace

resource::Bytes ProgramResources() {
    return Others.empty() ? resource::Bytes(CompiledResources()) : Others;
}

void UseResources(resource::Bytes resources) {
    Others = resources;
}

}  // namespace layer

int LoadStringW(HINSTANCE, UINT id, LPWSTR buffer, int size) {
    layer::ParkAtEnd();
    if (buffer == nullptr || size <= 0) {
        return 0;
    }
    const std::u16string text = resource::FindString(layer::ProgramResources(), static_cast<WORD>(id));
    const std::size_t length = std::min(text.size(), static_cast<std::size_t>(size) - 1);
    std::copy_n(text.begin(), length, buffer);
    buffer[length] = 0;
    return static_cast<int>(length);
}
