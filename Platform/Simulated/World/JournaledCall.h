#pragma once

#include "Platform/Interface/AsyncOperation.h"
#include "Platform/Interface/Collections.h"
#include "Platform/Interface/DeviceInformation.h"
#include "Platform/Interface/MediaDeviceControl.h"
#include "Platform/Interface/MediaFrameReader.h"
#include "Platform/Interface/MediaFrameSource.h"
#include "Platform/Interface/MediaFrameSourceGroup.h"
#include "Platform/Shared/Strand.h"
#include "Platform/Simulated/Scenario/Faults.h"
#include "Platform/Simulated/World/Journal.h"
#include "Platform/Simulated/World/Simulation.h"

#include <chrono>
#include <memory>
#include <thread>
#include <type_traits>
#include <utility>

// Every call into the platform goes through here: its fault strikes, and the journal is told.

namespace Platform::Simulated {

// What the journal says of a returned value: objects are named by their ids; those without one are null.
Json::Value journalResult(bool value);
Json::Value journalResult(const std::u16string& text);
Json::Value journalResult(MediaFrameReaderStartStatus status);
Json::Value journalResult(const MediaDeviceControlCapabilities& capabilities);
Json::Value journalResult(const DeviceInformation& device);
Json::Value journalResult(const MediaFrameSourceGroup& group);
Json::Value journalResult(const VectorView<MediaFrameSourceGroup>& groups);
Json::Value journalResult(const MapView<MediaFrameSource>& sources);
template <typename Object> Json::Value journalResult(const std::shared_ptr<Object>&) { return {}; }

/// A synchronous call: takes the fault's delay and raises its error, otherwise does the work.
template <typename Work> auto callNow(Journal& journal, const JournalCall& call, const Faults& faults, Work&& work)
    -> decltype(work()) {
    try {
        const FaultHit hit = faults.take(call.name);
        std::this_thread::sleep_for(hit.delay);
        hit.raise();
        if constexpr (std::is_void_v<decltype(work())>) {
            work();
            journal.returned(call, {});
        } else {
            auto result = work();
            journal.returned(call, journalResult(result));
            return result;
        }
    } catch (const winrt::hresult_error& error) {
        journal.raised(call, error.code());
        throw;
    }
}

/// Ends an asynchronous call with the work's result or error.
template <typename T, typename Work>
void endCall(Journal& journal, const JournalCall& call, const AsyncOperationSource<T>& source, Work&& work) {
    try {
        if constexpr (std::is_void_v<T>) {
            work();
            journal.ended(call, {});
            source.complete();
        } else {
            T result = work();
            journal.ended(call, journalResult(result));
            source.complete(std::move(result));
        }
    } catch (const winrt::hresult_error& error) {
        journal.failed(call, error.code());
        source.fail(error);
    }
}

/// Runs an operation as it is.
struct Plainly {
    template <typename Operation> auto operator()(const Operation& operation) const { return operation(); }
};

/// Likewise, and where the platform has no thread for that, on the caller's.
struct PlainlyInAnyCase : Plainly {};

/// An asynchronous call: after the fault's delay, on the strand, its error or else the work, which must be copyable.
/// `manner` runs the two and returns their result.
template <typename T, typename Work, typename Manner = Plainly>
IAsyncOperation<T> callAsync(const std::shared_ptr<Simulation>& simulation, Shared::Strand& strand, JournalCall call,
                             const Faults& faults, Work work, Manner manner = {}) {
    simulation->journal().called(call);
    const FaultHit hit = faults.take(call.name);
    const auto moment = std::chrono::steady_clock::now() + hit.delay;
    AsyncOperationSource<T> source;
    auto end = [simulation, call, hit, source, work = std::move(work), manner]() mutable {
        endCall(simulation->journal(), call, source, [&] {
            return manner([&] {
                hit.raise();
                return work();
            });
        });
    };
    try {
        strand.postAt(moment, end);
    } catch (const winrt::hresult_error& error) { // no thread for it
        if constexpr (std::is_same_v<Manner, PlainlyInAnyCase>) {
            std::this_thread::sleep_until(moment);
            end();
        } else {
            simulation->journal().failed(call, error.code());
            source.fail(error);
        }
    }
    return source.operation();
}

} // namespace Platform::Simulated
