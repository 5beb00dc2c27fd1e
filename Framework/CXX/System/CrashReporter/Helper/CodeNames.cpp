#include "Framework/CXX/System/CrashReporter/Helper/CodeNames.h"

#include <cxxabi.h>
#include <dwarf.h>
#include <elfutils/libdw.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <memory>

namespace Halden::System {

namespace {

struct FreeMemory {
    void operator()(void* memory) const noexcept { std::free(memory); }
};

std::string demangle(const char* name) {
    if (name == nullptr)
        return {};
    int status = 0;
    const std::unique_ptr<char, FreeMemory> plain(abi::__cxa_demangle(name, nullptr, nullptr, &status));
    return plain ? plain.get() : name;
}

std::string textAttribute(Dwarf_Die* die, unsigned attribute) {
    Dwarf_Attribute storage;
    const char* text = dwarf_formstring(dwarf_attr_integrate(die, attribute, &storage));
    return text != nullptr ? text : "";
}

std::string functionName(Dwarf_Die* die) {
    const std::string linkage = textAttribute(die, DW_AT_linkage_name);
    return linkage.empty() ? textAttribute(die, DW_AT_name) : demangle(linkage.c_str());
}

std::string sourceOfLine(Dwfl_Module* module, std::uint64_t address) {
    Dwfl_Line* line = dwfl_module_getsrc(module, address);
    int number = 0;
    const char* file = line != nullptr ? dwfl_lineinfo(line, nullptr, &number, nullptr, nullptr, nullptr) : nullptr;
    return file != nullptr ? std::string(file) + ":" + std::to_string(number) : "";
}

/// Where an inlined function was called.
std::string sourceOfCall(Dwarf_Die* unit, Dwarf_Die* inlined) {
    Dwarf_Files* files = nullptr;
    Dwarf_Word fileNumber = 0;
    Dwarf_Word line = 0;
    Dwarf_Attribute storage;
    if (dwarf_getsrcfiles(unit, &files, nullptr) != 0 ||
        dwarf_formudata(dwarf_attr(inlined, DW_AT_call_file, &storage), &fileNumber) != 0 ||
        dwarf_formudata(dwarf_attr(inlined, DW_AT_call_line, &storage), &line) != 0) {
        return {};
    }
    const char* file = dwarf_filesrc(files, fileNumber, nullptr, nullptr);
    return file != nullptr ? std::string(file) + ":" + std::to_string(line) : "";
}

/// The scopes around an address, innermost first, all of them in the code as it is (not as it was written).
std::vector<Dwarf_Die> concreteScopes(Dwarf_Die* unit, Dwarf_Addr addressInFile) {
    Dwarf_Die* scopes = nullptr;
    const int count = dwarf_getscopes(unit, addressInFile, &scopes);
    const std::unique_ptr<Dwarf_Die, FreeMemory> owner(scopes);
    if (count <= 0)
        return {};
    Dwarf_Die* around = nullptr;
    const int aroundCount = dwarf_getscopes_die(&scopes[0], &around);
    const std::unique_ptr<Dwarf_Die, FreeMemory> aroundOwner(around);
    return aroundCount > 0 ? std::vector<Dwarf_Die>(around, around + aroundCount) : std::vector<Dwarf_Die>();
}

} // namespace

std::vector<CodePlace> codePlaces(Dwfl* dwfl, std::uint64_t address) {
    Dwfl_Module* module = dwfl_addrmodule(dwfl, address);
    if (module == nullptr)
        return {CodePlace{}};
    std::vector<CodePlace> places;
    std::string source;
    // Functions of unnamed namespaces have their full name in the symbol table only.
    std::string function = demangle(dwfl_module_addrname(module, address));
    Dwarf_Addr bias = 0;
    Dwarf_Die* unit = dwfl_module_addrdie(module, address, &bias);
    // Between two units the library finds the one before: code without debug information.
    if (unit != nullptr && dwarf_haspc(unit, address - bias) == 1) {
        source = sourceOfLine(module, address);
        for (Dwarf_Die& scope : concreteScopes(unit, address - bias)) {
            if (dwarf_tag(&scope) == DW_TAG_inlined_subroutine) {
                places.push_back({functionName(&scope), source});
                source = sourceOfCall(unit, &scope);
            } else if (function.empty() && dwarf_tag(&scope) == DW_TAG_subprogram) {
                function = functionName(&scope);
            }
        }
    }
    places.push_back({function, source});
    return places;
}

std::string modulePlace(Dwfl* dwfl, std::uint64_t address) {
    Dwfl_Module* module = dwfl_addrmodule(dwfl, address);
    if (module == nullptr)
        return {};
    Dwarf_Addr start = 0;
    const char* name = dwfl_module_info(module, nullptr, &start, nullptr, nullptr, nullptr, nullptr, nullptr);
    char offset[20];
    std::snprintf(offset, sizeof(offset), "+0x%llx", static_cast<unsigned long long>(address - start));
    return std::filesystem::path(name != nullptr ? name : "?").filename().string() + offset;
}

} // namespace Halden::System
