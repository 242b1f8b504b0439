// A client of voice control in the service's name, as far as the recogniser's side sees one.
#pragma once

#include <sdbus-c++/sdbus-c++.h>

#include <condition_variable>
#include <deque>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

namespace TestSupport {

/** One call of the recogniser's side. */
struct VoiceCall {
    std::string method;
    int number = 0;  // the state, or the event of a result
    std::vector<std::string> text;
    std::vector<std::string> nlu;
};

/** Owns the service's name and, unless that is what it lacks, a client's object. Ends before the bus does.
 * One thread. */
class VoicePeer {
  public:
    /** What a result is answered with: success, an error, or nothing at all. */
    enum class Manner { Polite, Refusing, Silent };
    /** Without an object every call is an error; without hearing calls there is no answer at all. */
    enum class Lack { Object, Hearing };

    VoicePeer(int state, std::vector<std::string> commands, Manner manner = Manner::Polite);
    explicit VoicePeer(Lack lack);
    ~VoicePeer();

    /** Changes what the client is, and tells of it. */
    void become(int state, std::vector<std::string> commands);

    /** Waits until somebody has asked what the client is. */
    bool waitForLook();

    /** The next call that arrived; nothing when none comes in time. */
    std::optional<VoiceCall> next();

  private:
    void exportObject();
    void arrived(VoiceCall call);

    int state_ = 0;
    std::vector<std::string> commands_;
    Manner manner_ = Manner::Polite;
    bool looked_ = false;
    std::mutex mutex_;
    std::condition_variable changed_;
    std::deque<VoiceCall> calls_;
    std::unique_ptr<sdbus::IConnection> connection_;
    std::unique_ptr<sdbus::IObject> object_;
};

}  // namespace TestSupport
