#pragma once

#include "LogCollector.h"
#include "Pictures.h"
#include "UiTest.h"
#include "ZVItemView.h"
#include "ZVItemViewCell.h"
#include <ZelvanoUI/Sandbox.h>
#include <ZelvanoUI/ZVImagesFetcher.h>
#include <ZelvanoUI/ZVRecommendation.h>
#include <ZelvanoUI/ZVRecommendationView.h>

#include <QJsonArray>
#include <QJsonObject>

/// Records the viewer's picks.
class Picks : public zelvano::ZVRecommendationViewDelegate
{
public:
    void didSelecteRecommendation(const std::shared_ptr<zelvano::ZVVideoParams> &video) override
    {
        videos.push_back(video);
    }

    zelvano::ZVVideoList videos;
};

inline std::shared_ptr<zelvano::ZVRecommendation> recommendationOf(const QJsonArray &videos)
{
    return zelvano::recommendations({{QStringLiteral("data"), QJsonObject{{QStringLiteral("videos"), videos}}}});
}

/// A video by its number, with or without a category.
inline QJsonObject videoJson(int number, const QUrl &image = {}, const QString &category = {})
{
    QJsonObject video{{QStringLiteral("title"), QStringLiteral("Video %1").arg(number)},
                      {QStringLiteral("videoId"), QStringLiteral("video-%1").arg(number)},
                      {QStringLiteral("url"), QStringLiteral("http://videos.example/%1.mp4").arg(number)},
                      {QStringLiteral("durationSec"), 60 + number},
                      {QStringLiteral("imageUrl"), image.toString()}};
    if (!category.isNull())
        video.insert(QStringLiteral("category"), category);
    return video;
}

/// Videos from number 0 on, the same number for each category.
inline QJsonArray videosJson(int count, const QUrl &image = {}, const QStringList &categories = {QString()})
{
    QJsonArray videos;
    for (int i = 0; i < count; ++i) {
        for (const auto &category : categories)
            videos.append(videoJson(static_cast<int>(videos.size()), image, category));
    }
    return videos;
}

inline QQuickItem *outletOf(const zelvano::ZVItemViewCell *cell, const QString &name)
{
    return cell ? cell->findChild<QQuickItem *>(name) : nullptr;
}

inline QString textOf(const zelvano::ZVItemViewCell *cell, const QString &outlet)
{
    const auto *label = outletOf(cell, outlet);
    return label ? label->property("text").toString() : QString();
}

/// The number of the view's cells below this item, shown or waiting for reuse.
inline qsizetype cellCount(const zelvano::ZVItemView *view, const QQuickItem *item)
{
    qsizetype count = 0;
    for (const auto *child : item->childItems()) {
        const auto *cell = qobject_cast<const zelvano::ZVItemViewCell *>(child);
        count += (cell && cell->view() == view ? 1 : 0) + cellCount(view, child);
    }
    return count;
}

/// A service on loopback, and a host's window with a native view.
template<class View> class NativeStage
{
public:
    explicit NativeStage(QSize size = {320, 480}) : window(size)
    {
        const bool started = sandbox.start();
        Q_ASSERT(started);
        zelvano::ZVImagesFetcher::removeCachedImages();
        items()->setParentItem(window.contentItem());
        items()->setSize(size);
        view->setDelegate(picks);
    }

    zelvano::ZVItemView *items() const { return qobject_cast<zelvano::ZVItemView *>(view->view()); }
    zelvano::ZVItemViewCell *cell(qint64 row) const { return items()->cellForRow(row); }
    /// The corner of a cell in the view.
    QPointF place(qint64 row) const { return cell(row)->mapToItem(items(), QPointF()); }

    /// The URL of a picture, unique for this name.
    QUrl picture(const QString &name, const QByteArray &body, std::chrono::milliseconds delay = {})
    {
        const auto path = QStringLiteral("/pictures/") + name;
        const auto kind = zelvano::sandbox::Fault::Kind::Body;
        sandbox.addFault(path, {}, {.kind = kind, .delay = delay, .body = body, .times = -1});
        return sandbox.url(path);
    }
    /// Videos that share a picture.
    QJsonArray videos(int count, const QStringList &categories = {QString()})
    {
        return videosJson(count, picture(common, pictureFile({32, 18})), categories);
    }
    int hits() const { return sandbox.hits(QStringLiteral("/pictures/") + common); }
    bool show(const QJsonArray &videos, qint64 count)
    {
        view->setRecommendations(recommendationOf(videos));
        return window.appear() && waitForItems(count) && flushMainQueue();
    }
    bool fill(int count) { return show(videos(count), count); }
    bool waitForItems(qint64 count)
    {
        return waitUntil([&] {
            items()->layoutIfNeeded();
            return items()->itemCount() == count;
        });
    }
    bool waitForPicks(std::size_t count)
    {
        return waitUntil([&] { return picks->videos.size() == count; });
    }
    /// The texts of the cells from the top.
    QStringList titles() const
    {
        items()->layoutIfNeeded();
        QStringList titles;
        for (const auto *cell : items()->shownCells())
            titles.append(textOf(cell, QStringLiteral("titleLable")));
        return titles;
    }
    /// A video's cell in sight.
    zelvano::ZVItemViewCell *cellInSight() const
    {
        for (auto *cell : items()->shownCells()) {
            auto *const inner = innerOf(cell);
            auto *const video = inner ? inner->cellForRow(0) : cell;
            if (video && centreOf(video).y() > 100) // The first ones may be above the window.
                return video;
        }
        return nullptr;
    }
    /// A press that stops a movement picks nothing, and prevents no later pick.
    void stopAndPick()
    {
        QMetaObject::invokeMethod(items()->scroller(), "flick", Q_ARG(qreal, 0), Q_ARG(qreal, -1500));
        QVERIFY(waitUntil([&] { return offset() > 50; }));
        tap(window, Pointer::Touch, centreOf(cellInSight()));
        QVERIFY(waitUntil([&] { return isAtRest(); }) && flushMainQueue());
        QVERIFY(picks->videos.empty());
        pressByScreenReader(cellInSight());
        QVERIFY(waitForPicks(1));
        tap(window, Pointer::Touch, centreOf(cellInSight()));
        QVERIFY(waitForPicks(2));
    }
    double offset() const { return items()->scroller()->property("contentY").toDouble(); }
    bool isAtRest() const { return !items()->scroller()->property("moving").toBool(); }
    /// The places of all marked videos: their row, in a table after the row of their category.
    QString marked() const
    {
        QStringList places;
        for (const auto *cell : items()->shownCells()) {
            auto *const inner = innerOf(cell);
            const auto *marked = qobject_cast<zelvano::ZVItemViewCell *>((inner ? inner : items())->currentCell());
            if (inner && marked)
                places.append(QStringLiteral("%1.%2").arg(cell->row()).arg(marked->row()));
            else if (marked == cell)
                places.append(QString::number(cell->row()));
        }
        return places.join(u' ');
    }
    /// Presses keys. Each step is a key, and the marked place after it.
    void walk(const QString &steps)
    {
        for (const auto &step : steps.split(QStringLiteral(", "))) {
            const auto name = step.section(u' ', 0, 0);
            key(QKeySequence::fromString(name)[0].key());
            QCOMPARE(name + u' ' + marked(), step);
        }
    }
    void activate(qint64 row) { items()->activate(row); }
    void key(Qt::Key key) { QTest::keyClick(&window, key); }

    LogCollector log;
    zelvano::sandbox::Sandbox sandbox;
    const std::shared_ptr<Picks> picks = std::make_shared<Picks>();
    HostWindow window;
    std::shared_ptr<View> view = View::create();

private:
    /// The videos of a category's row; null for a video's cell.
    static zelvano::ZVItemView *innerOf(const zelvano::ZVItemViewCell *cell)
    {
        auto *const inner = cell->findChild<zelvano::ZVItemView *>();
        if (inner)
            inner->layoutIfNeeded();
        return inner;
    }

    inline static const auto common = QStringLiteral("common");
};
