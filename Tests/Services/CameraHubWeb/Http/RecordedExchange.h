#pragma once

#include "Services/CameraHubWeb/Http/HttpExchange.h"

#include <memory>
#include <optional>
#include <string>
#include <utility>

/// A request without a connection; keeps what it is answered with.
class RecordedExchange : public CameraHubWeb::HttpExchange {
public:
    explicit RecordedExchange(CameraHubWeb::HttpRequest request) : _request(std::move(request)) {}

    const CameraHubWeb::HttpRequest& request() const override { return _request; }
    void send(CameraHubWeb::HttpResponse response) override { answer = std::move(response); }
    void stream(CameraHubWeb::HttpResponse head, std::shared_ptr<CameraHubWeb::BodyStream> body) override {
        answer = std::move(head);
        streamed = std::move(body);
    }
    void whenGone(std::function<void()> gone) override { goneCallback = std::move(gone); }

    /// The answer's header; empty where it has none. The name as it was written.
    std::string header(const std::string& name) const {
        for (const auto& [key, value] : answer->headers)
            if (key == name)
                return value;
        return "";
    }

    std::string body() const {
        if (!answer->body)
            return "";
        const auto first = answer->body->begin() + static_cast<std::ptrdiff_t>(answer->offset);
        return {first, first + static_cast<std::ptrdiff_t>(answer->length)};
    }

    std::optional<CameraHubWeb::HttpResponse> answer;
    std::shared_ptr<CameraHubWeb::BodyStream> streamed;
    std::function<void()> goneCallback;

private:
    const CameraHubWeb::HttpRequest _request;
};
