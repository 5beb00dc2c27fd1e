#include "Platform/V4l2/FrameReader.h"

#include "Platform/Shared/RunAsync.h"

#include <string_view>

namespace Platform::V4l2 {

FrameReader::~FrameReader() { stop(_worker, _running); }

void FrameReader::AcquisitionMode(MediaFrameReaderAcquisitionMode) {
    constexpr std::string_view operation = "MediaFrameReader.AcquisitionMode";
    _core->requireInitialised(operation);
    _worker->call<void>(operation, [](CameraSession& session) { session.requirePresence(); });
}

IAsyncOperation<MediaFrameReaderStartStatus> FrameReader::StartAsync() {
    constexpr std::string_view operation = "MediaFrameReader.StartAsync";
    _core->requireInitialised(operation);
    return Shared::runAsync<MediaFrameReaderStartStatus>(
        _core->pool(), [worker = _worker, running = _running, operation] {
            worker->call<void>(operation, [running](CameraSession& session) {
                if (running->load())
                    return;
                session.startReader();
                *running = true;
            });
            return MediaFrameReaderStartStatus::Success;
        });
}

/// Succeeds on whatever is left of the camera: one that is gone or closed streams no more, and one that does not
/// answer stops when it does.
void FrameReader::stop(const std::shared_ptr<CameraWorker>& worker, const Running& running) {
    try {
        worker->call<void>("MediaFrameReader.StopAsync", [running](CameraSession& session) {
            if (running->exchange(false))
                session.stopReader();
        });
    } catch (const winrt::hresult_error&) {
        // see above
    }
}

IAsyncAction FrameReader::StopAsync() {
    const AsyncOperationSource<void> source;
    const auto end = [pool = _core->pool(), source, worker = _worker, running = _running] {
        stop(worker, running);
        source.complete();
    };
    try {
        _core->pool()->post(end);
    } catch (const winrt::hresult_error&) {
        end(); // also where there is no thread for it
    }
    return source.operation();
}

} // namespace Platform::V4l2
