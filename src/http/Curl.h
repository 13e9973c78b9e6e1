#pragma once

#include <curl/curl.h>

#include <memory>

namespace zelvano::http {

/// Calls a clean-up function of libcurl.
template<auto cleanUp> struct CurlDeleter
{
    template<typename T> void operator()(T *handle) const { cleanUp(handle); }
};

// Move-only owners of what libcurl allocates.
using EasyHandle = std::unique_ptr<CURL, CurlDeleter<curl_easy_cleanup>>;
using MultiHandle = std::unique_ptr<CURLM, CurlDeleter<curl_multi_cleanup>>;
using ShareHandle = std::unique_ptr<CURLSH, CurlDeleter<curl_share_cleanup>>;
using StringList = std::unique_ptr<curl_slist, CurlDeleter<curl_slist_free_all>>;

inline void append(StringList &list, const char *text)
{
    // On failure libcurl returns null and does not change the list.
    if (curl_slist *longer = curl_slist_append(list.get(), text)) {
        (void)list.release();
        list.reset(longer);
    }
}

} // namespace zelvano::http
