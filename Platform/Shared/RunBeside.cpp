#include "Platform/Shared/RunBeside.h"

#include "Platform/Interface/HresultError.h"

#include <functional>
#include <new>
#include <thread>
#include <utility>

namespace Platform::Shared {

Imaging::Png::RunBeside runBeside(std::shared_ptr<WorkerPool> pool) {
    if (std::thread::hardware_concurrency() == 1)
        return {};
    return [pool = std::move(pool)](std::function<void()> work) {
        try {
            pool->post([pool, work = std::move(work)] { work(); });
        } catch (const winrt::hresult_error&) { // no thread
        } catch (const std::bad_alloc&) {
        }
    };
}

} // namespace Platform::Shared
