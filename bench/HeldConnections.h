#pragma once

#include "AnswerServer.h"
#include "Session.h"
#include "Waiting.h"
#include <ZelvanoUI/Protocol.h>

#include <algorithm>
#include <memory>
#include <vector>

namespace zelvano::bench {

/// Holds some of the library's six connections to the service during its lifetime, by requests without an answer.
class HeldConnections
{
public:
    explicit HeldConnections(int count)
    {
        http::Request request;
        request.url = QUrl(API_URL_PROD + QStringLiteral("hold"));
        for (int i = 0; i < count; ++i) {
            m_held.push_back(http::Session::dataTask(request, {}));
            m_held.back()->resume();
        }
    }
    ~HeldConnections()
    {
        for (const auto &task : m_held)
            task->cancel();
        wait("the held requests", [this] {
            return std::all_of(m_held.begin(), m_held.end(), [](const auto &task) { return task->isFinished(); });
        });
    }
    Q_DISABLE_COPY_MOVE(HeldConnections)

private:
    std::vector<std::shared_ptr<http::Task>> m_held;
};

} // namespace zelvano::bench
