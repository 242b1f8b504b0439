// App-control messages as values, and the one way to send them.
#pragma once

#include <map>
#include <string>
#include <vector>

#include <app_control.h>

#include "AsyncThread.h"

namespace Util {

/**
 * One app-control message, incoming or outgoing, as plain texts. An incoming request is copied out of the
 * platform's handle at once; an outgoing one becomes a handle only at the moment of sending. Copies share
 * nothing. The object never owns the handle that it records. It is used by one thread at a time.
 */
class AppControlData {
  public:
    using ExtraDataMap = std::map<std::string, std::string>;
    using ExtraVectorDataMap = std::map<std::string, std::vector<std::string>>;

    AppControlData();

    /**
     * Copies app id, operation, URI and all extra data out of an incoming request. What cannot be read stays
     * empty; a null handle gives an empty message. Never throws on a platform error. The handle itself is not
     * recorded.
     */
    explicit AppControlData(app_control_h& handle);

    AppControlData(const AppControlData&) = default;
    AppControlData& operator=(const AppControlData&) = default;
    virtual ~AppControlData();

    /** App id of the target (outgoing) or of the sender (incoming). */
    AppControlData& setPackageName(const std::string& packageName);
    AppControlData& setOperation(const std::string& operation);
    AppControlData& setUri(const std::string& uri);

    /** `callback` is called by the platform, on the main loop, with `userData` when the launched app replies.
     */
    void setReplyCallback(app_control_reply_cb callback, void* userData);

    /** Makes this message a reply to `request`, which stays the caller's. */
    void setRequestedAppControl(app_control_h request);

    /** The result that a reply carries. */
    void setResultCode(app_control_result_e resultCode);

    const std::string& getPackageName() const { return mPackageName; }
    const std::string& getOperation() const { return mOperation; }
    const std::string& getUri() const { return mUri; }
    app_control_reply_cb getReplyCallback() const;
    void* getReplyCallbackUserData() const;
    app_control_h getRequestedAppControl() const;
    app_control_result_e getResultCode() const;

    /** Keys in byte order: the order in which they are sent. */
    const ExtraDataMap& getExtraDataMap() const { return mExtraData; }
    const ExtraVectorDataMap& getExtraVectorDataMap() const { return mExtraVectorData; }

    /** The value under `key`. A missing key reads as empty, and is there from then on. */
    std::string& getExtraData(const std::string& key);
    std::vector<std::string>& getExtraVectorData(const std::string& key);

    /** Adds the value, or replaces the one under the same key. */
    AppControlData& addExtraData(const std::string& key, const std::string& value);
    AppControlData& addExtraVectorData(const std::string& key, const std::vector<std::string>& values);

    AppControlData& clearExtraData();
    AppControlData& clearExtraVectorData();

    /** Back to what the default constructor makes. */
    void clearData();

  private:
    void readExtraData(app_control_h handle, const char* key);
    void readExtraVectorData(app_control_h handle, const char* key);

    std::string mPackageName;
    std::string mOperation;
    std::string mUri;
    app_control_reply_cb mReplyCallback;
    void* mReplyCallbackUserData;
    app_control_h mRequestedAppControl;
    app_control_result_e mResultCode;
    ExtraDataMap mExtraData;
    ExtraVectorDataMap mExtraVectorData;
};

/**
 * Sends messages to other apps. Sending can block, so all requests go through one worker thread, which also
 * spaces them out; it runs from load time until the process's static destructors, which drop what is queued.
 */
class AppControl {
  public:
    AppControl() = delete;

    /**
     * Queues a copy of `data` to be sent, in the order of the calls. A failure is logged and reported to
     * nobody. A reply (with a requested app control) is refused with a log line. Any thread.
     */
    static void performAppControl(AppControlData& data);

    /**
     * Sends `data` (a request, or a reply if it has a requested app control) on the calling thread, which may
     * block. Returns 0 or the platform's error code of the first call that failed, which is logged.
     */
    static int performAppControlSync(AppControlData& data);

  private:
    static AsyncThread asyncThread;
};

}  // namespace Util
