#include "Platform/V4l2/Session/CameraWorker.h"

#include "Platform/Imaging/FrameConverter.h"
#include "Platform/Imaging/PngEncoder.h"
#include "Platform/Shared/RunBeside.h"
#include "Platform/Shared/StartThread.h"
#include "Platform/Shared/WakeUp.h"
#include "Platform/V4l2/Kernel/DeviceErrors.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <deque>
#include <mutex>
#include <new>
#include <optional>
#include <span>
#include <utility>

namespace Platform::V4l2 {

/// What the thread shares with the handle and with stills in the making; lives until the last of them has gone.
struct CameraWorker::State : std::enable_shared_from_this<State> {
    State(std::shared_ptr<SystemCalls> systemCalls, std::shared_ptr<Shared::WorkerPool> workers, CameraSource opened,
          const CameraLimits& timeLimits)
        : calls(std::move(systemCalls)), pool(std::move(workers)), source(std::move(opened)), limits(timeLimits),
          ended(std::make_shared<CompletionFlag>()), _wakeUp(source.node.devicePath) {}

    void run(const AsyncOperationSource<void>& opened);
    void post(Task task);
    void close();

    const std::shared_ptr<SystemCalls> calls;
    const std::shared_ptr<Shared::WorkerPool> pool;
    const CameraSource source;
    const CameraLimits limits;
    const std::shared_ptr<CompletionFlag> ended; // the thread holds nothing of the camera any more
    std::atomic<bool> stuck{false};              // a call has not been answered in time, nor since

private:
    CameraSession::Surroundings surroundings();
    bool runTasks();
    void runTask(const Task& task);
    void pollOnce();
    void letGoIfGone();
    int timeoutInMs() const;

    const Shared::WakeUp _wakeUp;
    std::mutex _mutex;
    std::deque<Task> _tasks; // guarded by the mutex
    bool _closing = false;   // likewise
    bool _ended = false;     // likewise; no task runs any more

    std::unique_ptr<CameraSession> _session; // the thread's
    bool _gone = false;                      // likewise
};

namespace {

/// The file of a frame's picture. Nothing for a damaged frame: the next one may be whole.
std::optional<std::vector<std::uint8_t>> fileOf(const StillFrame& frame,
                                                const std::shared_ptr<Shared::WorkerPool>& pool) {
    try {
        return Imaging::encodePng(*Imaging::openFrame(frame.layout, frame.bytes), Shared::runBeside(pool));
    } catch (const winrt::hresult_error&) {
        return std::nullopt;
    }
}

/// Ends stills of one frame, one at least, with the same file for all; false if it is damaged. The frame, and each
/// request's stream, is let go of before the request ends: who waits for that takes the next still at once, and has
/// their memory.
bool endStills(std::vector<StillRequest>& requests, StillFrame& frame, const std::string& path,
               const std::shared_ptr<Shared::WorkerPool>& pool) {
    try {
        auto file = fileOf(frame, pool);
        if (!file)
            return false;
        frame.bytes = {};
        const std::span all(requests);
        for (StillRequest& request : all.first(all.size() - 1))
            request.operation.endWith([&] { std::exchange(request.stream, nullptr)->Write(*file); });
        StillRequest& last = all.back();
        last.operation.endWith([&] { std::exchange(last.stream, nullptr)->WriteOwned(std::move(*file)); });
    } catch (const std::bad_alloc&) {
        for (const StillRequest& request : requests)
            request.operation.fail(deviceError("still", path, ENOMEM));
    }
    return true;
}

} // namespace

CameraSession::Surroundings CameraWorker::State::surroundings() {
    // The session is owned by this object, which outlives it.
    return {calls, limits,
            [this](std::vector<StillRequest> requests, StillFrame frame) {
                pool->postWhenFree([state = shared_from_this(), requests = std::move(requests),
                                    frame = std::move(frame)]() mutable { makeStill(state, requests, frame); });
            },
            [this](const StillRequest& request, const winrt::hresult_error& error) {
                pool->postWhenFree([owner = pool, request, error] { request.operation.fail(error); });
            }};
}

/// Runs on the pool: neither decoding nor encoding holds the stream up.
void CameraWorker::makeStill(const std::shared_ptr<State>& state, std::vector<StillRequest>& requests,
                             StillFrame& frame) {
    const bool done = endStills(requests, frame, state->source.node.devicePath, state->pool);
    for (const StillRequest& request : requests)
        state->post({[request, done](CameraSession& session) {
                         if (done)
                             session.stillEnded();
                         else
                             session.retakeStill(request);
                     },
                     [request](const winrt::hresult_error& error) {
                         // On a camera that is gone a still never ends; on a closed one it fails.
                         if (error.code() == winrt::result::closed)
                             request.operation.fail(error);
                     },
                     "still"});
}

void CameraWorker::State::post(Task task) {
    std::unique_lock lock(_mutex);
    if (!_ended) {
        _tasks.push_back(std::move(task));
        _wakeUp.wake();
        return;
    }
    lock.unlock();
    task.refuse(closedError(task.operation, source.node.devicePath));
}

void CameraWorker::State::close() {
    std::lock_guard lock(_mutex);
    _closing = true;
    _wakeUp.wake();
}

void CameraWorker::State::run(const AsyncOperationSource<void>& opened) {
    opened.endWith([&] { _session = std::make_unique<CameraSession>(surroundings(), source); });
    stuck = false;
    if (!_session)
        close();
    while (runTasks())
        pollOnce();
    ended->set();
}

/// All tasks that wait; false when the thread is to end.
bool CameraWorker::State::runTasks() {
    for (;;) {
        std::unique_lock lock(_mutex);
        if (_tasks.empty()) {
            if (!_closing)
                return true;
            _ended = true;
            lock.unlock();
            if (_session)
                _session->refuseStills(closedError("still", source.node.devicePath));
            _session.reset();
            return false;
        }
        const Task task = std::move(_tasks.front());
        _tasks.pop_front();
        lock.unlock();
        runTask(task);
    }
}

void CameraWorker::State::runTask(const Task& task) {
    if (_session)
        task.run(*_session);
    else
        task.refuse(_gone ? goneError(task.operation, source.node.devicePath)
                          : closedError(task.operation, source.node.devicePath));
    stuck = false;
    letGoIfGone();
}

/// At once, as a node that somebody holds keeps its number when the camera comes back.
void CameraWorker::State::letGoIfGone() {
    if (!_session || !_session->isGone())
        return;
    _gone = true;
    _session.reset();
}

int CameraWorker::State::timeoutInMs() const {
    const auto deadline = _session ? _session->deadline() : std::nullopt;
    if (!deadline)
        return -1;
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(*deadline - std::chrono::steady_clock::now());
    return static_cast<int>(std::max<std::int64_t>(left.count(), 0));
}

void CameraWorker::State::pollOnce() {
    const int descriptor = _session ? _session->descriptor() : -1; // poll passes over -1
    // Without a wish for frames poll tells only of a camera that goes: one that is idle costs nothing until then. That
    // its stream has failed shows at the next request, as soon as the driver is emptied; unless all buffers were full
    // before, which leaves the failure no buffer to show in: then only frames that do not come tell, after the silence
    // of CameraLimits.
    const short wanted = _session && _session->wantsFrames() ? POLLIN : 0;
    std::array<pollfd, 2> waited{pollfd{_wakeUp.descriptor(), POLLIN, 0}, pollfd{descriptor, wanted, 0}};
    if (calls->poll(waited.data(), waited.size(), timeoutInMs()) < 0)
        return; // a signal: the loop comes back
    if (waited[0].revents != 0)
        _wakeUp.drain();
    if (!_session)
        return;
    if (waited[1].revents != 0)
        _session->framesWait((waited[1].revents & (POLLERR | POLLHUP | POLLNVAL)) != 0);
    if (const auto deadline = _session->deadline(); deadline && *deadline <= std::chrono::steady_clock::now())
        _session->deadlinePassed();
    letGoIfGone();
}

CameraWorker::CameraWorker(std::shared_ptr<SystemCalls> calls, std::shared_ptr<Shared::WorkerPool> pool,
                           CameraSource source, const CameraLimits& limits)
    : _state(std::make_shared<State>(std::move(calls), std::move(pool), std::move(source), limits)) {
    const AsyncOperationSource<void> opened;
    _thread = Shared::startThread(path(), [state = _state, opened] { state->run(opened); });
    _threadId = _thread.get_id();
    try {
        waitFor(*CompletionFlag::of(opened.operation()), "open");
        opened.operation().GetResults();
    } catch (const winrt::hresult_error&) {
        close();
        throw;
    }
}

CameraWorker::~CameraWorker() { close(); }

const std::string& CameraWorker::path() const { return _state->source.node.devicePath; }

void CameraWorker::post(Task task) { _state->post(std::move(task)); }

/// Once a driver is stuck, no caller waits for it again before it has answered; nor does the thread wait for itself.
std::chrono::milliseconds CameraWorker::timeToWait() const {
    const bool inVain = _state->stuck || std::this_thread::get_id() == _threadId;
    return inVain ? std::chrono::milliseconds(0) : _state->limits.answer;
}

void CameraWorker::waitFor(CompletionFlag& flag, std::string_view operation) {
    if (flag.waitUntil(std::chrono::steady_clock::now() + timeToWait()))
        return;
    _state->stuck = true;
    throw deviceError(operation, path(), ETIMEDOUT);
}

void CameraWorker::close() {
    if (!_thread.joinable())
        return;
    _state->close();
    if (_state->ended->waitUntil(std::chrono::steady_clock::now() + timeToWait()))
        _thread.join();
    else
        _thread.detach(); // it owns the state, and ends with the driver's answer
}

} // namespace Platform::V4l2
