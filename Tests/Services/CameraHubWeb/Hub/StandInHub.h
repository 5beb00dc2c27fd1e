#pragma once

#include "Tests/Client/ListeningSocket.h"

#include <CameraHubClient/CameraHubClient.h>

#include <condition_variable>
#include <cstdint>
#include <deque>
#include <list>
#include <memory>
#include <mutex>
#include <set>
#include <string>
#include <thread>
#include <vector>

namespace CameraHubWeb {

/// Both ports of a hub with many clients, which does one thing at a time and keeps one image. Any thread.
class StandInHub {
public:
    /// What becomes of a capture.
    enum class Capture {
        Taken,
        Failed,
        NotConnected,
        WithoutImage,
        Garbage,    ///< A reply of no hub.
        Rejected,   ///< As a message that was not understood.
        EndsHub,    ///< It stops, as by stop().
        Unanswered, ///< The hub hangs from then on.
    };

    /// Has these cameras, and runs.
    explicit StandInHub(std::set<std::string> uids = {"desk", "door"});
    ~StandInHub();
    StandInHub(const StandInHub&) = delete;
    StandInHub& operator=(const StandInHub&) = delete;

    CameraHub::Address address() const;

    /// Ends all connections; new ones are refused.
    void stop();
    /// At the same ports, after a stop.
    void start();

    void setCameras(std::set<std::string> uids);

    /// The next captures, one after the other; those after them are taken.
    void nextCaptures(const std::vector<Capture>& captures);
    /// The next so many images are gone when they are fetched.
    void loseImages(int count);
    /// Captures wait for allowCaptures().
    void holdCaptures();
    void allowCaptures(int count);

    /// "capture UID" when one comes, "fetch" when an image is fetched, in their order.
    std::vector<std::string> journal() const;
    /// Whether a capture came before another one had failed or its image had been fetched.
    bool hadTwoCapturesAtOnce() const;
    int discoveries() const;
    /// For messages, open.
    int connections() const;
    /// For messages, all that there were.
    int connectionsEver() const;

    /// The file of its nth still, from 1.
    static std::vector<std::uint8_t> picture(int number);

private:
    using Lock = std::unique_lock<std::mutex>;

    void accept(const ListeningSocket& listener, bool isForMessages);
    void serve(int connection, bool isForMessages);
    std::string answer(const std::string& message, Lock& lock);
    std::string answerCapture(int id, const std::string& uid, Lock& lock);
    std::string replyTo(Capture capture, int id);
    std::string answerDiscovery(int id);
    std::string answerImage(const std::string& request);
    void endAll();
    void join();

    // They keep the ports while it is stopped, since whoever connects then could be given them for itself.
    const int _messagePortKeeper;
    const int _imagePortKeeper;
    const std::uint16_t _messagePort;
    const std::uint16_t _imagePort;
    std::unique_ptr<ListeningSocket> _messages;
    std::unique_ptr<ListeningSocket> _images;
    std::list<std::thread> _acceptors;

    mutable std::mutex _mutex;
    std::condition_variable _changed;
    std::list<std::thread> _servers;
    std::set<int> _messageConnections;
    std::set<int> _imageConnections;
    std::set<std::string> _uids;
    std::deque<Capture> _nextCaptures;
    std::vector<std::string> _journal;
    std::string _imageId;
    int _imagesToLose = 0;
    int _capturesAllowed = 0;
    int _stills = 0;
    int _discoveries = 0;
    int _connectionsEver = 0;
    bool _holdsCaptures = false;
    bool _isBusy = false;
    bool _hasCaptureUnderWay = false;
    bool _hadTwoCaptures = false;
    bool _isStopped = false;
};

} // namespace CameraHubWeb
