#pragma once

#include "Platform/Interface/AsyncWait.h"
#include "Platform/Shared/WorkerPool.h"
#include "Platform/V4l2/Session/CameraSession.h"

#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <thread>

namespace Platform::V4l2 {

/// The thread of one open camera, which alone touches the camera's session. That thread itself releases the worker
/// where a still that never ends owns, through its handler, the camera. A driver that never answers costs a caller the
/// time limit; the thread then ends, and gives everything back, when the driver lets go. Any thread.
class CameraWorker {
public:
    /// Opens the camera. Raises.
    CameraWorker(std::shared_ptr<SystemCalls> calls, std::shared_ptr<Shared::WorkerPool> pool, CameraSource source,
                 const CameraLimits& limits);
    /// Closes.
    ~CameraWorker();
    CameraWorker(const CameraWorker&) = delete;
    CameraWorker& operator=(const CameraWorker&) = delete;

    const std::string& path() const;

    /// What `work` returns or raises on the camera's thread. Raises if the camera is gone or closed, or does not
    /// answer within the limit; the work may then still be done later, so that it owns what it uses.
    template <typename T, typename Work> T call(std::string_view operation, Work work) {
        AsyncOperationSource<T> source;
        post({[source, work](CameraSession& session) { source.endWith([&] { return work(session); }); },
              [source](const winrt::hresult_error& error) { source.fail(error); }, std::string(operation)});
        waitFor(*CompletionFlag::of(source.operation()), operation);
        return source.operation().GetResults();
    }

    /// Stops the stream and gives the device back, within the limit; stills that are waited for fail. Without
    /// effect on a closed camera.
    void close();

private:
    struct Task {
        std::function<void(CameraSession&)> run;
        std::function<void(const winrt::hresult_error&)> refuse;
        std::string operation;
    };
    struct State;

    void post(Task task);
    void waitFor(CompletionFlag& flag, std::string_view operation);
    std::chrono::milliseconds timeToWait() const;
    static void makeStill(const std::shared_ptr<State>& state, std::vector<StillRequest>& requests, StillFrame& frame);

    const std::shared_ptr<State> _state;
    std::thread _thread;
    std::thread::id _threadId; // also once the thread has been let go
};

} // namespace Platform::V4l2
