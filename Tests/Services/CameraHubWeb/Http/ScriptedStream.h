#pragma once

#include "Services/CameraHubWeb/Http/HttpExchange.h"
#include "Tests/Support/WaitUntil.h"

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <mutex>
#include <string_view>
#include <utility>
#include <vector>

/// A stream whose pieces a test gives, each when it was asked for.
class ScriptedStream : public CameraHubWeb::BodyStream {
public:
    void next(std::function<void(CameraHubWeb::SharedBytes)> ready) override {
        const std::lock_guard lock(_mutex);
        EXPECT_FALSE(_ready) << "asked for a piece before the one before had come";
        EXPECT_EQ(_ends, 0) << "asked for a piece after the end";
        _ready = std::move(ready);
        ++_asked;
    }

    void ended() override {
        const std::lock_guard lock(_mutex);
        ++_ends;
    }

    int asked() const {
        const std::lock_guard lock(_mutex);
        return _asked;
    }

    int ends() const {
        const std::lock_guard lock(_mutex);
        return _ends;
    }

    /// Waits until a piece is asked for, and gives this one; null ends the stream.
    void give(CameraHubWeb::SharedBytes piece) {
        std::function<void(CameraHubWeb::SharedBytes)> ready;
        EXPECT_TRUE(waitUntil([this, &ready] {
            const std::lock_guard lock(_mutex);
            ready = std::exchange(_ready, nullptr);
            return ready != nullptr;
        })) << "no piece was asked for";
        if (ready)
            ready(std::move(piece));
    }

    void say(std::string_view text) {
        give(std::make_shared<const std::vector<std::uint8_t>>(text.begin(), text.end()));
    }

    /// The callback of the piece that was asked for last.
    std::function<void(CameraHubWeb::SharedBytes)> takeReady() {
        const std::lock_guard lock(_mutex);
        return std::exchange(_ready, nullptr);
    }

private:
    mutable std::mutex _mutex;
    std::function<void(CameraHubWeb::SharedBytes)> _ready;
    int _asked = 0;
    int _ends = 0;
};
