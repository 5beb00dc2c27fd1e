#pragma once

#include "Services/CameraHubWeb/Http/HttpExchange.h"

#include <functional>
#include <memory>
#include <mutex>
#include <optional>

namespace CameraHubWeb {

/// An answer's head with its body, or with a stream for one.
struct Answer {
    HttpResponse response;
    std::shared_ptr<BodyStream> stream;
};

/// Where an exchange puts its answer, and where its connection finds it. Any thread.
class PendingAnswer {
public:
    /// `wake` has the connection look; it is called on the thread that gives the answer.
    explicit PendingAnswer(std::function<void()> wake) : _wake(std::move(wake)) {}

    /// The first one counts, and none does when the client has gone: their streams are ended at once.
    void give(Answer answer);

    /// None where it has not come, or was taken.
    std::optional<Answer> take();

    /// Has it called once if the client goes before there is an answer.
    void whenGone(std::function<void()> gone);

    /// The client has gone.
    void abandon();

private:
    /// Whether an answer counts; from then on no other one does.
    bool begin();

    const std::function<void()> _wake;
    std::mutex _mutex;
    std::optional<Answer> _answer;
    bool _isAnswered = false;
    bool _isGone = false;
    std::function<void()> _gone;
};

/// Makes the exchange whose answer goes there.
std::shared_ptr<HttpExchange> makeExchange(HttpRequest request, std::shared_ptr<PendingAnswer> answer);

/// Where a stream puts its next piece. Any thread.
class PendingPiece {
public:
    explicit PendingPiece(std::function<void()> wake) : _wake(std::move(wake)) {}

    /// Null: the end.
    void give(SharedBytes piece);

    /// None where it has not come, or was taken.
    std::optional<SharedBytes> take();

private:
    const std::function<void()> _wake;
    std::mutex _mutex;
    std::optional<SharedBytes> _piece;
};

} // namespace CameraHubWeb
