#include "Http2.h"

#include <nghttp2/nghttp2.h>

#include <algorithm>
#include <cstring>

namespace ServiceTest {

namespace {

/** A body on its way. */
struct Outgoing {
    std::string body;
    size_t sent = 0;
};

nghttp2_nv header(const std::string& name, const std::string& value)
{
    return {reinterpret_cast<uint8_t*>(const_cast<char*>(name.data())),
            reinterpret_cast<uint8_t*>(const_cast<char*>(value.data())), name.size(), value.size(),
            NGHTTP2_NV_FLAG_NONE};
}

ssize_t readBody(nghttp2_session*, int32_t, uint8_t* buffer, size_t size, uint32_t* flags,
                 nghttp2_data_source* source, void*)
{
    auto& outgoing = *static_cast<Outgoing*>(source->ptr);
    const size_t count = std::min(size, outgoing.body.size() - outgoing.sent);
    memcpy(buffer, outgoing.body.data() + outgoing.sent, count);
    outgoing.sent += count;
    if (outgoing.sent == outgoing.body.size())
        *flags |= NGHTTP2_DATA_FLAG_EOF;
    return static_cast<ssize_t>(count);
}

/** One connection. One thread. */
class Http2Connection {
  public:
    Http2Connection(ByteStream& stream, Http2Script& script) : stream_(stream), script_(script)
    {
        nghttp2_session_callbacks* callbacks = nullptr;
        nghttp2_session_callbacks_new(&callbacks);
        nghttp2_session_callbacks_set_send_callback(callbacks, onSend);
        nghttp2_session_callbacks_set_on_header_callback(callbacks, onHeader);
        nghttp2_session_callbacks_set_on_frame_recv_callback(callbacks, onFrame);
        nghttp2_session_server_new(&session_, callbacks, this);
        nghttp2_session_callbacks_del(callbacks);
        nghttp2_submit_settings(session_, NGHTTP2_FLAG_NONE, nullptr, 0);
    }

    ~Http2Connection() { nghttp2_session_del(session_); }
    Http2Connection(const Http2Connection&) = delete;
    Http2Connection& operator=(const Http2Connection&) = delete;

    void serve()
    {
        nghttp2_session_send(session_);
        char byte;
        while (nghttp2_session_want_read(session_) && stream_.receive(byte)) {
            if (nghttp2_session_mem_recv(session_, reinterpret_cast<const uint8_t*>(&byte), 1) < 0)
                return;
            nghttp2_session_send(session_);
        }
    }

  private:
    static Http2Connection& of(void* self) { return *static_cast<Http2Connection*>(self); }

    static ssize_t onSend(nghttp2_session*, const uint8_t* data, size_t size, int, void* self)
    {
        of(self).stream_.send({reinterpret_cast<const char*>(data), size});
        return static_cast<ssize_t>(size);
    }

    static int onHeader(nghttp2_session*, const nghttp2_frame* frame, const uint8_t* name, size_t nameSize,
                        const uint8_t* value, size_t valueSize, uint8_t, void* self)
    {
        of(self).requests_[frame->hd.stream_id][{reinterpret_cast<const char*>(name), nameSize}] = {
            reinterpret_cast<const char*>(value), valueSize};
        return 0;
    }

    static int onFrame(nghttp2_session*, const nghttp2_frame* frame, void* self)
    {
        const bool isWhole =
            frame->hd.type == NGHTTP2_HEADERS && (frame->hd.flags & NGHTTP2_FLAG_END_STREAM) != 0;
        if (isWhole)
            of(self).answer(frame->hd.stream_id);
        return 0;
    }

    void answer(int32_t stream)
    {
        const Http2Answer answer = script_.take(requests_[stream]);
        if (answer.isReset)
            nghttp2_submit_rst_stream(session_, NGHTTP2_FLAG_NONE, stream, NGHTTP2_INTERNAL_ERROR);
        else
            send(stream, answer);
    }

    void send(int32_t stream, const Http2Answer& answer)
    {
        const std::string names[] = {":status", "content-length"};
        const std::string values[] = {std::to_string(answer.status), std::to_string(answer.body.size())};
        const nghttp2_nv headers[] = {header(names[0], values[0]), header(names[1], values[1])};
        Outgoing& outgoing = outgoing_[stream] = {answer.body};
        nghttp2_data_provider provider{};
        provider.source.ptr = &outgoing;
        provider.read_callback = readBody;
        nghttp2_submit_response(session_, stream, headers, 2, &provider);
    }

    ByteStream& stream_;
    Http2Script& script_;
    nghttp2_session* session_ = nullptr;
    std::map<int32_t, Http2Request> requests_;
    std::map<int32_t, Outgoing> outgoing_;
};

}  // namespace

void Http2Script::answer(const std::string& path, const Http2Answer& answer)
{
    const std::lock_guard lock(mutex_);
    answers_[path] = answer;
}

std::vector<Http2Request> Http2Script::requests() const
{
    const std::lock_guard lock(mutex_);
    return requests_;
}

Http2Answer Http2Script::take(const Http2Request& request)
{
    const std::lock_guard lock(mutex_);
    requests_.push_back(request);
    const auto target = request.find(":path");
    const std::string path = target == request.end() ? "" : target->second;
    const auto found = answers_.find(path.substr(0, path.find('?')));
    return found == answers_.end() ? Http2Answer{"", 404} : found->second;
}

Opening http2(const Appliance::Certificate& certificate, const std::shared_ptr<Http2Script>& script)
{
    const Opening tls = overTls(certificate, {"h2"});
    return [tls, script](int socket) {
        if (const auto stream = tls(socket))
            Http2Connection(*stream, *script).serve();
        return nullptr;
    };
}

}  // namespace ServiceTest
