// Internal: not installed.
#pragma once

#include <curl/curl.h>

#include <memory>

namespace zelvano {

/// Calls a libcurl clean-up function; stateless, so that an owner is as large as the pointer it owns.
template<auto cleanUp> struct UrlCurlDeleter
{
    template<typename T> void operator()(T *handle) const { cleanUp(handle); }
};

// The move-only owners of what libcurl allocates.
using UrlEasyHandle = std::unique_ptr<CURL, UrlCurlDeleter<curl_easy_cleanup>>;
using UrlMultiHandle = std::unique_ptr<CURLM, UrlCurlDeleter<curl_multi_cleanup>>;
using UrlShareHandle = std::unique_ptr<CURLSH, UrlCurlDeleter<curl_share_cleanup>>;
using UrlStringList = std::unique_ptr<curl_slist, UrlCurlDeleter<curl_slist_free_all>>;

inline void append(UrlStringList &list, const char *text)
{
    // On failure libcurl returns null and leaves the list as it was.
    if (curl_slist *longer = curl_slist_append(list.get(), text)) {
        (void)list.release();
        list.reset(longer);
    }
}

} // namespace zelvano
