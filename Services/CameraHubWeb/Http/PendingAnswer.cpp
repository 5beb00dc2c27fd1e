#include "Services/CameraHubWeb/Http/PendingAnswer.h"

#include "Services/CameraHubWeb/Http/Problems.h"

#include <utility>

namespace CameraHubWeb {
namespace {

class PendingExchange : public HttpExchange {
public:
    PendingExchange(HttpRequest request, std::shared_ptr<PendingAnswer> answer)
        : _request(std::move(request)), _answer(std::move(answer)) {}

    /// Counts only where there was no answer.
    ~PendingExchange() override { _answer->give({problemResponse(Problems::unexpected()), nullptr}); }

    const HttpRequest& request() const override { return _request; }

    void send(HttpResponse response) override { _answer->give({std::move(response), nullptr}); }

    void stream(HttpResponse head, std::shared_ptr<BodyStream> body) override {
        _answer->give({std::move(head), std::move(body)});
    }

    void whenGone(std::function<void()> gone) override { _answer->whenGone(std::move(gone)); }

private:
    const HttpRequest _request;
    const std::shared_ptr<PendingAnswer> _answer;
};

} // namespace

std::shared_ptr<HttpExchange> makeExchange(HttpRequest request, std::shared_ptr<PendingAnswer> answer) {
    return std::make_shared<PendingExchange>(std::move(request), std::move(answer));
}

void PendingAnswer::give(Answer answer) {
    if (!begin()) {
        if (answer.stream)
            answer.stream->ended();
        return;
    }
    std::shared_ptr<BodyStream> unwanted;
    {
        const std::lock_guard lock(_mutex);
        if (_isGone)
            unwanted = std::move(answer.stream);
        else
            _answer = std::move(answer);
    }
    if (unwanted)
        unwanted->ended();
    _wake();
}

bool PendingAnswer::begin() {
    std::function<void()> dropped; // beyond the lock: it may hold anything
    const std::lock_guard lock(_mutex);
    if (_isAnswered || _isGone)
        return false;
    _isAnswered = true;
    dropped.swap(_gone);
    return true;
}

std::optional<Answer> PendingAnswer::take() {
    const std::lock_guard lock(_mutex);
    return std::exchange(_answer, std::nullopt);
}

void PendingAnswer::whenGone(std::function<void()> gone) {
    {
        const std::lock_guard lock(_mutex);
        if (_isAnswered)
            return;
        if (!_isGone) {
            _gone.swap(gone); // what was there before goes beyond the lock
            return;
        }
    }
    gone();
}

void PendingAnswer::abandon() {
    std::function<void()> gone;
    std::optional<Answer> unsent;
    {
        const std::lock_guard lock(_mutex);
        if (_isGone)
            return;
        _isGone = true;
        gone = std::exchange(_gone, nullptr);
        unsent = std::exchange(_answer, std::nullopt);
    }
    if (gone)
        gone();
    if (unsent && unsent->stream)
        unsent->stream->ended();
}

void PendingPiece::give(SharedBytes piece) {
    {
        const std::lock_guard lock(_mutex);
        _piece = std::move(piece);
    }
    _wake();
}

std::optional<SharedBytes> PendingPiece::take() {
    const std::lock_guard lock(_mutex);
    return std::exchange(_piece, std::nullopt);
}

} // namespace CameraHubWeb
