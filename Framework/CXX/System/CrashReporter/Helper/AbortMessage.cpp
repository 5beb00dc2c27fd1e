#include "Framework/CXX/System/CrashReporter/Helper/AbortMessage.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <optional>

namespace Halden::System {

namespace {

// The variable through which glibc passes its last words on to debuggers. It points to the length of the
// block, 32 bits, and the text behind it.
constexpr const char* messageVariable = "__abort_msg";
constexpr std::size_t longestMessage = 1000;

std::optional<std::uint64_t> addressOf(Dwfl_Module* module, const char* variable) {
    const int count = dwfl_module_getsymtab(module);
    for (int i = 0; i < count; ++i) {
        GElf_Sym symbol;
        GElf_Addr address = 0;
        const char* name = dwfl_module_getsym_info(module, i, &symbol, &address, nullptr, nullptr, nullptr);
        if (name != nullptr && symbol.st_shndx != SHN_UNDEF && std::strcmp(name, variable) == 0)
            return address;
    }
    return std::nullopt;
}

struct Search {
    std::optional<std::uint64_t> address;
};

int searchModule(Dwfl_Module* module, void**, const char* name, Dwarf_Addr, void* argument) {
    if (std::strstr(name, "/libc.so") == nullptr && std::strstr(name, "/libc-") == nullptr)
        return DWARF_CB_OK;
    auto* search = static_cast<Search*>(argument);
    search->address = addressOf(module, messageVariable);
    return search->address ? DWARF_CB_ABORT : DWARF_CB_OK;
}

} // namespace

std::string abortMessage(Dwfl* dwfl, ProcessMemory& memory) {
    Search search;
    dwfl_getmodules(dwfl, searchModule, &search, 0);
    const auto block = search.address ? memory.word(*search.address) : std::nullopt;
    if (!block || *block == 0)
        return {};
    std::uint32_t size = 0;
    if (!memory.read(*block, &size, sizeof(size)) || size <= sizeof(size))
        return {};
    std::string text(std::min<std::size_t>(size - sizeof(size), longestMessage), '\0');
    if (!memory.read(*block + sizeof(size), text.data(), text.size()))
        return {};
    text.resize(std::strlen(text.c_str()));
    std::replace_if(text.begin(), text.end(), [](unsigned char unit) { return unit < 0x20; }, ' ');
    return text;
}

} // namespace Halden::System
