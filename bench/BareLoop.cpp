#include "BareLoop.h"

namespace zelvano::bench {

namespace {

size_t discard(char *, size_t, size_t size, void *)
{
    return size;
}

} // namespace

void runTransfers(CURLM *multi, const std::vector<http::EasyHandle> &handles, int count,
                  const std::function<void(CURL *, int)> &prepare, const std::function<void(CURL *)> &end)
{
    int started = 0;
    int ended = 0;
    const auto start = [&](CURL *easy) {
        if (started == count)
            return;
        prepare(easy, started++);
        curl_multi_add_handle(multi, easy);
    };
    for (const auto &easy : handles)
        start(easy.get());
    while (ended < count) {
        const int before = ended;
        int running = 0;
        int left = 0;
        curl_multi_perform(multi, &running);
        while (const CURLMsg *message = curl_multi_info_read(multi, &left)) {
            CURL *const easy = message->easy_handle;
            if (message->data.result != CURLE_OK)
                qFatal("a bare request failed: %s", curl_easy_strerror(message->data.result));
            end(easy);
            curl_multi_remove_handle(multi, easy);
            ++ended;
            start(easy);
        }
        if (ended == before)
            curl_multi_poll(multi, nullptr, 0, 1000, nullptr);
    }
}

BareLoop::BareLoop(const http::Request &request, quint16 port, int connections)
    : m_request(request), m_multi(curl_multi_init())
{
    append(m_headers, "Expect:");
    for (const auto &[name, value] : m_request.headers)
        append(m_headers, (name + ": " + value).constData());
    append(m_routes, ("::127.0.0.1:" + QByteArray::number(port)).constData());
    for (int i = 0; i < connections; ++i) {
        CURL *const easy = m_handles.emplace_back(curl_easy_init()).get();
        curl_easy_setopt(easy, CURLOPT_URL, m_request.url.toEncoded().constData());
        curl_easy_setopt(easy, CURLOPT_CONNECT_TO, m_routes.get());
        curl_easy_setopt(easy, CURLOPT_PROXY, "");
        curl_easy_setopt(easy, CURLOPT_NOSIGNAL, 1L);
        curl_easy_setopt(easy, CURLOPT_HTTPHEADER, m_headers.get());
        curl_easy_setopt(easy, CURLOPT_ACCEPT_ENCODING, "");
        curl_easy_setopt(easy, CURLOPT_POSTFIELDSIZE, long(m_request.body.size()));
        curl_easy_setopt(easy, CURLOPT_POSTFIELDS, m_request.body.constData());
        curl_easy_setopt(easy, CURLOPT_WRITEFUNCTION, discard);
    }
}

void BareLoop::post(int count)
{
    runTransfers(
        m_multi.get(), m_handles, count, [](CURL *, int) {}, [](CURL *) {});
}

} // namespace zelvano::bench
