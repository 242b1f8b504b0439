// Fetches each URL of its arguments with a plain libcurl handle; prints libcurl's code and the HTTP status.
#include <curl/curl.h>

#include <cstdio>
#include <cstdlib>

namespace {

std::size_t discard(char*, std::size_t size, std::size_t count, void*)
{
    return size * count;
}

void fetch(const char* url)
{
    CURL* handle = curl_easy_init();
    curl_easy_setopt(handle, CURLOPT_URL, url);
    curl_easy_setopt(handle, CURLOPT_WRITEFUNCTION, discard);
    curl_easy_setopt(handle, CURLOPT_NOSIGNAL, 1L);
    const CURLcode code = curl_easy_perform(handle);
    long status = 0;
    curl_easy_getinfo(handle, CURLINFO_RESPONSE_CODE, &status);
    std::printf("%d %ld\n", code, status);
    curl_easy_cleanup(handle);
}

}  // namespace

int main(int argc, char** argv)
{
    curl_global_init(CURL_GLOBAL_ALL);
    for (int i = 1; i < argc; ++i)
        fetch(argv[i]);
    curl_global_cleanup();
    return EXIT_SUCCESS;
}
