#pragma once

#include "Platform/V4l2/Kernel/SystemCalls.h"
#include "Tests/Platform/V4l2/FakeKernel/FakeNode.h"

#include <condition_variable>
#include <cstddef>
#include <memory>
#include <mutex>
#include <optional>
#include <vector>

namespace Platform::V4l2 {

/// Stands for calls that have no request of their own.
constexpr unsigned long openCall = 1;
constexpr unsigned long mapCall = 2;
constexpr unsigned long pollCall = 3;

/// The kernel's video devices in memory: each call keeps the kernel's contract, returning -1 and setting errno. Any
/// thread.
class FakeDriver final : public SystemCalls {
public:
    FakeDriver();
    ~FakeDriver() override;

    void plug(const std::string& path, FakeDevice device);
    /// Every call on the device then fails, as after pulling it out.
    void unplug(const std::string& path);

    /// Delivers one frame into the oldest queued buffer; it is lost when none is queued. False while nothing streams.
    bool deliver(const std::string& path, const FakeFrame& frame = {});

    /// Calls of that request fail from the `after`th on (0: the next), that many times.
    void failOn(unsigned long request, int error, unsigned after = 0, unsigned times = 1'000'000);
    /// Calls of that request wait until `release`.
    void blockOn(unsigned long request);
    void release();
    void heal();
    /// The request during whose `after`th call the device is pulled out; counted over all requests when 0.
    void unplugAtCall(const std::string& path, unsigned call);

    std::size_t openDescriptors() const;
    std::size_t mappings() const;
    std::size_t buffers(const std::string& path) const;
    /// Those that wait to be filled.
    std::size_t emptyBuffers(const std::string& path) const;
    bool isStreaming(const std::string& path) const;
    /// Whether the latest poll was for frames, too.
    bool isAwaited(const std::string& path) const;
    unsigned calls(unsigned long request) const;
    unsigned allCalls() const;
    bool isBlocked() const;
    std::int32_t control(const std::string& path, std::uint32_t id) const;
    void setControl(const std::string& path, std::uint32_t id, std::int32_t value);
    v4l2_fract interval(const std::string& path) const;
    /// The values that an application has written, in order.
    std::vector<std::pair<std::uint32_t, std::int32_t>> writes(const std::string& path) const;

    int open(const char* path, int flags) override;
    int close(int descriptor) override;
    int ioctl(int descriptor, unsigned long request, void* argument) override;
    void* mmap(std::size_t length, int protection, int flags, int descriptor, off_t offset) override;
    int munmap(void* address, std::size_t length) override;
    int poll(pollfd* descriptors, nfds_t count, int timeoutInMs) override;

private:
    struct Fault {
        unsigned long request;
        int error;
        unsigned after;
        unsigned times;
    };

    int injected(unsigned long request);
    void noteWhatIsAwaited(const pollfd* descriptors, nfds_t count);
    bool hasComplaint(const pollfd* descriptors, nfds_t count) const;
    int dispatch(FakeNode& node, int descriptor, unsigned long request, void* argument);
    std::shared_ptr<FakeNode> find(const std::string& path) const;

    mutable std::mutex _mutex; // guards all below
    std::condition_variable _released;
    std::map<std::string, std::shared_ptr<FakeNode>> _nodes; // plugged in
    std::map<int, std::shared_ptr<FakeNode>> _open;          // by descriptor
    std::map<void*, std::vector<std::uint8_t>> _mappings;
    std::map<void*, std::pair<std::shared_ptr<FakeNode>, std::pair<std::size_t, std::size_t>>> _places;
    std::vector<Fault> _faults;
    std::map<unsigned long, unsigned> _calls;
    std::optional<unsigned long> _blocked;
    unsigned _waiting = 0;
    std::optional<std::pair<std::string, unsigned>> _unplugAt;
};

} // namespace Platform::V4l2
