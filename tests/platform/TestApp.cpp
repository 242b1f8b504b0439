// An app for the tests: the first argument says how it starts, the operation of a request what it does.
#include <service_app.h>
#include <signal.h>
#include <stdio.h>
#include <stdlib.h>
#include <unistd.h>

#include <atomic>
#include <string>
#include <thread>
#include <vector>

namespace {

std::string startMode;
app_control_h keptRequest;
std::vector<std::thread> threads;

void say(const std::string& line)
{
    printf("%s\n", line.c_str());
    fflush(stdout);
}

std::string take(char* text)
{
    std::string copy = text ? text : "";
    free(text);
    return copy;
}

std::string operationOf(app_control_h request)
{
    char* text = nullptr;
    app_control_get_operation(request, &text);
    return take(text);
}

std::string extraOf(app_control_h request, const char* key)
{
    char* text = nullptr;
    app_control_get_extra_data(request, key, &text);
    return take(text);
}

int send(const std::string& appId, const std::string& operation, app_control_reply_cb callback = nullptr)
{
    app_control_h request = nullptr;
    app_control_create(&request);
    app_control_set_app_id(request, appId.c_str());
    app_control_set_operation(request, operation.c_str());
    const int result = app_control_send_launch_request(request, callback, nullptr);
    app_control_destroy(request);
    return result;
}

// Sends without end from a thread that outlives service_app_main(), as a static worker does.
class StaticSender {
  public:
    ~StaticSender()
    {
        stop_ = true;
        if (thread_.joinable())
            thread_.join();
        if (lastResult_ != APP_CONTROL_ERROR_NONE)
            say("last send " + std::to_string(lastResult_));
    }

    void start(const std::string& appId)
    {
        thread_ = std::thread([this, appId] { run(appId); });
    }

  private:
    static void onReply(app_control_h, app_control_h, app_control_result_e, void*) {}

    void run(const std::string& appId)
    {
        while (!stop_) {
            lastResult_ = send(appId, "echo", onReply);
            if (++sent_ == 10)
                say("sending");
        }
        // After the app has ended, while static objects are being destroyed.
        lastResult_ = send(appId, "echo", onReply);
    }

    std::atomic<bool> stop_{false};
    std::atomic<int> lastResult_{0};
    int sent_ = 0;
    std::thread thread_;
};

StaticSender staticSender;

bool copyExtra(app_control_h from, const char* key, void* to)
{
    const auto reply = static_cast<app_control_h>(to);
    bool list = false;
    app_control_is_extra_data_array(from, key, &list);
    if (!list) {
        app_control_add_extra_data(reply, key, extraOf(from, key).c_str());
        return true;
    }
    char** texts = nullptr;
    int length = 0;
    app_control_get_extra_data_array(from, key, &texts, &length);
    app_control_add_extra_data_array(reply, key, const_cast<const char**>(texts), length);
    for (int i = 0; i < length; ++i)
        free(texts[i]);
    free(texts);
    return true;
}

int answer(app_control_h request, app_control_result_e result)
{
    app_control_h reply = nullptr;
    app_control_create(&reply);
    app_control_foreach_extra_data(request, copyExtra, reply);
    const int code = app_control_reply_to_launch_request(reply, request, result);
    app_control_destroy(reply);
    return code;
}

bool describeExtra(app_control_h request, const char* key, void*)
{
    bool list = false;
    char** texts = nullptr;
    int length = -1;
    const int code = app_control_is_extra_data_array(request, key, &list);
    if (!list) {
        say("  '" + std::string(key) + "' = '" + extraOf(request, key) + "' " + std::to_string(code));
        return true;
    }
    app_control_get_extra_data_array(request, key, &texts, &length);
    say("  '" + std::string(key) + "' has " + std::to_string(length));
    for (int i = 0; i < length; ++i)
        free(texts[i]);
    free(texts);
    return true;
}

void answerTwice(app_control_h request)
{
    const int first = answer(request, APP_CONTROL_RESULT_SUCCEEDED);
    const int second = answer(request, APP_CONTROL_RESULT_FAILED);
    say("answers " + std::to_string(first) + " " + std::to_string(second));
}

void describe(app_control_h request)
{
    char* text = nullptr;
    bool wanted = false;
    app_control_get_uri(request, &text);
    std::string line = "request " + operationOf(request) + " uri=" + take(text);
    text = nullptr;
    const int known = app_control_get_caller(request, &text);
    line += known == APP_CONTROL_ERROR_NONE ? " caller=" + take(text) : " caller unknown";
    text = nullptr;
    app_control_get_app_id(request, &text);
    line += " app_id=" + take(text);
    app_control_is_reply_requested(request, &wanted);
    say(line + (wanted ? " reply wanted" : " no reply wanted"));
    app_control_foreach_extra_data(request, describeExtra, nullptr);
}

void sendMany(const std::string& appId, int count)
{
    int failed = 0;
    for (int i = 0; i < count; ++i)
        failed += send(appId, "ping") == APP_CONTROL_ERROR_NONE ? 0 : 1;
    say("sent " + std::to_string(count) + ", failed " + std::to_string(failed));
}

void sayMainAgain()
{
    char name[] = "again";
    char* argv[] = {name, nullptr};
    service_app_lifecycle_callback_s callbacks = {[](void*) { return false; }, nullptr, nullptr};
    say("main again " + std::to_string(service_app_main(1, argv, &callbacks, nullptr)));
}

void onRequest(app_control_h request, void* user_data)
{
    const std::string operation = operationOf(request);
    if (user_data != &startMode)
        say("wrong user data");
    if (operation == "echo")
        answer(request, APP_CONTROL_RESULT_SUCCEEDED);
    else if (operation == "cancel")
        answer(request, APP_CONTROL_RESULT_CANCELED);
    else if (operation == "answer twice")
        answerTwice(request);
    else if (operation == "keep")
        app_control_clone(&keptRequest, request);
    else if (operation == "answer kept" && keptRequest)
        answer(keptRequest, APP_CONTROL_RESULT_SUCCEEDED);
    else if (operation == "number")
        say("number " + extraOf(request, "number"));
    else if (operation == "send many")
        sendMany(extraOf(request, "to"), std::stoi(extraOf(request, "count")));
    else if (operation == "die")
        _exit(3);
    else if (operation == "answer and die")
        answer(request, APP_CONTROL_RESULT_SUCCEEDED), _exit(3);
    else if (operation == "exit")
        service_app_exit();
    else if (operation == "signal")
        raise(SIGTERM);
    else if (operation == "exit from thread")
        threads.emplace_back(service_app_exit);
    else if (operation == "main again")
        sayMainAgain();
    else if (operation != "ping")
        describe(request);
}

// Until the test sends SIGUSR1, which main() has blocked.
void waitForGo()
{
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGUSR1);
    say("waiting");
    int number = 0;
    sigwait(&signals, &number);
}

void blockGo()
{
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGUSR1);
    pthread_sigmask(SIG_BLOCK, &signals, nullptr);
}

bool onCreate(void*)
{
    say("create");
    if (startMode == "signal in create")
        raise(SIGTERM);
    if (startMode == "exit in create")
        service_app_exit();
    if (startMode == "exit in create from thread")
        std::thread(service_app_exit).join();
    if (startMode == "wait in create" || startMode == "wait and refuse")
        waitForGo();
    return startMode != "refuse" && startMode != "wait and refuse";
}

void onTerminate(void*)
{
    say("terminate");
    if (startMode == "send in terminate")
        say("send " + std::to_string(send("org.example.nobody", "ping")));
}

}  // namespace

int main(int argc, char** argv)
{
    startMode = argc > 1 ? argv[1] : "";
    blockGo();
    if (startMode == "static sender")
        staticSender.start(argv[2]);
    service_app_lifecycle_callback_s callbacks = {onCreate, onTerminate, onRequest};
    if (startMode == "only create")
        callbacks = {onCreate, nullptr, nullptr};
    const int result = service_app_main(argc, argv, &callbacks, &startMode);
    say("result " + std::to_string(result));
    if (startMode == "send after main")
        say("send " + std::to_string(send("org.example.nobody", "ping")));
    for (std::thread& thread : threads)
        thread.join();
    if (keptRequest)
        app_control_destroy(keptRequest);
    return result == 0 ? EXIT_SUCCESS : EXIT_FAILURE;
}
