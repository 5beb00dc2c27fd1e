#include "Framework/CXX/System/CrashReporter/Helper/CoreFile.h"

#include "Framework/CXX/System/CrashReporter/Helper/CoreNotes.h"
#include "Framework/CXX/System/CrashReporter/Helper/ProcessMaps.h"

#include <elf.h>
#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <system_error>
#include <vector>

namespace Halden::System {

namespace {

constexpr std::uint64_t pageSize = 4096;
// Larger ones are address space that was set aside, not memory in use.
constexpr std::uint64_t largestMapping = 16ULL << 30;

class Descriptor {
public:
    explicit Descriptor(const std::string& path)
        : _value(open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600)) {}
    ~Descriptor() {
        if (_value >= 0)
            close(_value);
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;

    int value() const { return _value; }

private:
    int _value;
};

std::string lastProblem() { return std::error_code(errno, std::generic_category()).message(); }

/// How much of a mapping goes into the file.
std::uint64_t keptBytes(const ProcessMapping& mapping) {
    const std::uint64_t size = mapping.end - mapping.begin;
    if (!mapping.readable || mapping.shared || size > largestMapping || mapping.name == "[vvar]" ||
        mapping.name == "[vsyscall]") {
        return 0;
    }
    if (mapping.changed || mapping.inode == 0)
        return size;
    // It can be read in the file itself; its first page identifies it.
    return mapping.fileOffset == 0 ? std::min(size, pageSize) : 0;
}

Elf64_Ehdr elfHeader(std::size_t segments) {
    Elf64_Ehdr header{};
    std::copy_n(ELFMAG, SELFMAG, header.e_ident);
    header.e_ident[EI_CLASS] = ELFCLASS64;
    header.e_ident[EI_DATA] = ELFDATA2LSB;
    header.e_ident[EI_VERSION] = EV_CURRENT;
    header.e_type = ET_CORE;
    header.e_machine = EM_X86_64;
    header.e_version = EV_CURRENT;
    header.e_phoff = sizeof(Elf64_Ehdr);
    header.e_ehsize = sizeof(Elf64_Ehdr);
    header.e_phentsize = sizeof(Elf64_Phdr);
    header.e_phnum = static_cast<Elf64_Half>(segments);
    return header;
}

std::vector<Elf64_Phdr> segmentHeaders(const std::vector<ProcessMapping>& maps, std::uint64_t noteBytes) {
    std::vector<Elf64_Phdr> headers(1 + maps.size());
    std::uint64_t offset = sizeof(Elf64_Ehdr) + headers.size() * sizeof(Elf64_Phdr);
    headers[0].p_type = PT_NOTE;
    headers[0].p_offset = offset;
    headers[0].p_filesz = noteBytes;
    headers[0].p_align = 4;
    offset = (offset + noteBytes + pageSize - 1) / pageSize * pageSize;
    for (std::size_t i = 0; i < maps.size(); ++i) {
        Elf64_Phdr& header = headers[i + 1];
        header.p_type = PT_LOAD;
        header.p_flags =
            (maps[i].readable ? PF_R : 0u) | (maps[i].writable ? PF_W : 0u) | (maps[i].executable ? PF_X : 0u);
        header.p_vaddr = maps[i].begin;
        header.p_memsz = maps[i].end - maps[i].begin;
        header.p_filesz = keptBytes(maps[i]);
        header.p_offset = offset;
        header.p_align = pageSize;
        offset += header.p_filesz;
    }
    return headers;
}

bool writeAt(int file, const void* data, std::size_t size, std::uint64_t offset) {
    return pwrite(file, data, size, static_cast<off_t>(offset)) == static_cast<ssize_t>(size);
}

/// Pages of zeros become holes in the file; so do pages that can't be read.
bool copySegment(const ProcessMemory& memory, int file, const Elf64_Phdr& segment) {
    std::vector<unsigned char> buffer(256 * pageSize);
    for (std::uint64_t done = 0; done < segment.p_filesz;) {
        const auto wanted = std::min<std::uint64_t>(buffer.size(), segment.p_filesz - done);
        std::size_t size = wanted;
        bool known = memory.read(segment.p_vaddr + done, buffer.data(), size);
        if (!known) { // one bad page must not spoil its neighbours
            size = pageSize;
            known = memory.read(segment.p_vaddr + done, buffer.data(), size);
        }
        const bool empty = !known || std::all_of(buffer.begin(), buffer.begin() + static_cast<std::ptrdiff_t>(size),
                                                 [](unsigned char value) { return value == 0; });
        if (!empty && !writeAt(file, buffer.data(), size, segment.p_offset + done))
            return false;
        done += size;
    }
    return true;
}

bool writeAllParts(const CrashedProcess& process, int signal, int file) {
    const std::vector<ProcessMapping> maps = readMaps(process.process());
    const std::string notes = coreNotes(process, signal, maps);
    const std::vector<Elf64_Phdr> segments = segmentHeaders(maps, notes.size());
    const Elf64_Ehdr header = elfHeader(segments.size());
    if (segments.size() >= PN_XNUM) {
        errno = EFBIG;
        return false;
    }
    const auto end = static_cast<off_t>(segments.back().p_offset + segments.back().p_filesz);
    return ftruncate(file, end) == 0 && writeAt(file, &header, sizeof(header), 0) &&
           writeAt(file, segments.data(), segments.size() * sizeof(segments[0]), sizeof(header)) &&
           writeAt(file, notes.data(), notes.size(), segments[0].p_offset) &&
           std::all_of(segments.begin() + 1, segments.end(),
                       [&](const Elf64_Phdr& segment) { return copySegment(process.memory(), file, segment); });
}

} // namespace

std::string writeCoreFile(const CrashedProcess& process, int signal, const std::string& path) {
    const std::string unfinished = path + ".part";
    const Descriptor file(unfinished);
    if (file.value() >= 0 && writeAllParts(process, signal, file.value()) &&
        std::rename(unfinished.c_str(), path.c_str()) == 0) {
        return {};
    }
    std::string problem = "none: " + lastProblem();
    std::remove(unfinished.c_str());
    return problem;
}

} // namespace Halden::System
