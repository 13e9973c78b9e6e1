#pragma once

#include "LogCollector.h"
#include "MainQueue.h"
#include "Pictures.h"
#include "Sandbox.h"
#include "UiTest.h"
#include "ZVImagesFetcher.h"
#include "ZVItemView.h"
#include "ZVItemViewCell.h"
#include "ZVRecommendation.h"
#include "ZVRecommendationView.h"

#include <QJsonArray>
#include <QJsonObject>

/// Keeps what the viewer picks.
class Picks : public zelvano::ZVRecommendationViewDelegate
{
public:
    void didSelecteRecommendation(const std::shared_ptr<zelvano::ZVVideoParams> &video) override
    {
        videos.push_back(video);
        if (onPick)
            onPick();
    }

    zelvano::ZVVideoList videos;
    std::function<void()> onPick;
};

inline std::shared_ptr<zelvano::ZVRecommendation> recommendationOf(const QJsonArray &videos)
{
    return zelvano::recommendations({{QStringLiteral("data"), QJsonObject{{QStringLiteral("videos"), videos}}}});
}

/// A video by its number, of a category or of none.
inline QJsonObject videoJson(int number, const QUrl &image = {}, const QString &category = {})
{
    QJsonObject video{{QStringLiteral("title"), QStringLiteral("Video %1").arg(number)},
                      {QStringLiteral("videoId"), QStringLiteral("video-%1").arg(number)},
                      {QStringLiteral("durationSec"), 60 + number},
                      {QStringLiteral("imageUrl"), image.toString()}};
    if (!category.isNull())
        video.insert(QStringLiteral("category"), category);
    return video;
}

inline QQuickItem *outletOf(const zelvano::ZVItemViewCell *cell, const QString &name)
{
    const auto items = cell ? cell->childItems() : QList<QQuickItem *>();
    return items.isEmpty() ? nullptr : items.first()->findChild<QQuickItem *>(name);
}

inline QString textOf(const zelvano::ZVItemViewCell *cell, const QString &outlet)
{
    const auto *label = outletOf(cell, outlet);
    return label ? label->property("text").toString() : QString();
}

inline QPoint centreOf(const QQuickItem *item)
{
    return item->mapToScene({item->width() / 2, item->height() / 2}).toPoint();
}

/// A service on loopback, and a window of the host's in which a native view stands.
class NativeStage
{
public:
    explicit NativeStage(const std::shared_ptr<zelvano::ZVRecommendationView> &nativeView, QSize size = {320, 480})
        : view(nativeView), window(size)
    {
        const bool started = sandbox.start();
        Q_ASSERT(started);
        zelvano::ZVImagesFetcher::cachedImages().removeAll();
        items()->setParentItem(window.contentItem());
        items()->setSize(size);
        view->setDelegate(picks);
    }

    ~NativeStage() { view.reset(); } // Its item is in the window.
    Q_DISABLE_COPY_MOVE(NativeStage)

    zelvano::ZVItemView *items() const { return qobject_cast<zelvano::ZVItemView *>(view->view()); }

    /// The address of a picture, the only one under this name.
    QUrl picture(const QString &name, const QByteArray &body, std::chrono::milliseconds delay = {})
    {
        zelvano::sandbox::Fault answer;
        answer.kind = zelvano::sandbox::Fault::Kind::Body;
        answer.body = body;
        answer.delay = delay;
        answer.times = -1;
        const auto path = QStringLiteral("/pictures/") + name;
        sandbox.addFault(path, {}, answer);
        return sandbox.url(path);
    }
    bool waitForItems(qint64 count)
    {
        return waitUntil([&] {
            items()->layoutIfNeeded();
            return items()->itemCount() == count;
        });
    }
    /// By what its cells show, from the top.
    QStringList titles() const
    {
        items()->layoutIfNeeded();
        QStringList titles;
        for (const auto *cell : items()->shownCells())
            titles.append(textOf(cell, QStringLiteral("titleLable")));
        return titles;
    }
    double offset() const { return items()->scroller()->property("contentY").toDouble(); }

    LogCollector log;
    zelvano::sandbox::Sandbox sandbox;
    const std::shared_ptr<Picks> picks = std::make_shared<Picks>();
    std::shared_ptr<zelvano::ZVRecommendationView> view;
    HostWindow window;
};

/// Everything that the main queue was given before has run.
inline bool mainQueueIsDone()
{
    const auto done = std::make_shared<bool>(false);
    zelvano::MainQueue::shared().post([done] { *done = true; });
    return waitUntil([done] { return *done; });
}
