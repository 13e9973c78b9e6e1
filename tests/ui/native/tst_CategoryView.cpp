#include "ErrorCode.h"
#include "NativeViews.h"
#include "Traffic.h"
#include "ZVRecommendationTableViewCell.h"
#include <ZelvanoUI/ZVCategoryView.h>

#include <atomic>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using namespace zelvano;

namespace {

/// A table of categories in a window.
struct Stage : NativeStage<ZVCategoryView>
{
    Stage() : NativeStage({400, 480}) {}

    bool fill(int count, const QStringList &categories)
    {
        return show(videos(count, categories), categories.size()) && rowsAreLaidOut();
    }
    bool rowsAreLaidOut()
    {
        for (auto *row : rows())
            row->videosCollectionView()->layoutIfNeeded();
        return !rows().empty();
    }
    ZVRecommendationTableViewCell *row(qint64 number) const
    {
        return qobject_cast<ZVRecommendationTableViewCell *>(cell(number));
    }
    ZVItemView *videosOf(qint64 number) const { return row(number)->videosCollectionView(); }
    std::vector<ZVRecommendationTableViewCell *> rows() const
    {
        std::vector<ZVRecommendationTableViewCell *> rows;
        for (auto *cell : items()->shownCells())
            rows.push_back(qobject_cast<ZVRecommendationTableViewCell *>(cell));
        return rows;
    }
};

const QStringList threeCategories{u"FORYOU"_s, u"MOSTRECENT"_s, u"MOSTVIEWED"_s};

QStringList manyCategories(int count)
{
    QStringList names;
    for (int i = 0; i < count; ++i)
        names.append(u"CATEGORY %1"_s.arg(i, 3, 10, QChar(u'0')));
    return names;
}

} // namespace

class tst_CategoryView : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void cleanup() { QGuiApplication::setLayoutDirection(Qt::LayoutDirectionAuto); }
    void rows()
    {
        Stage stage;
        QVERIFY(stage.fill(2, {u"FORYOU"_s, QString(10000, u'C'), u"مستحسن"_s}));
        QCOMPARE(spoken(stage.items()), u"List: Recommended videos by category"_s);
        QCOMPARE(spoken(stage.cell(1)), u"Grouping: For you"_s);
        QCOMPARE(spoken(stage.videosOf(1)->cellForRow(1)), u"ListItem: Video 3, 1:03, For you, 2 of 2"_s);
        const auto recommendation = stage.view->recommendations();
        const auto categories = recommendation->categories();
        QCOMPARE(categories.size(), 3);
        for (qint64 i = 0; i < 3; ++i) {
            const auto *row = stage.row(i);
            const auto *label = outletOf(row, u"categoryLabel"_s);
            QCOMPARE(label->property("text").toString(), categories[i]);
            QCOMPARE(row->recommendations(), *recommendation->videosForCategory(categories[i]));
            QVERIFY(row->width() == 400 && label->width() <= 400 && label->height() < 40);
            for (const auto *cell : stage.videosOf(i)->shownCells()) { // Nobody numbers these or fetches for them.
                QCOMPARE(textOf(cell, u"valueLabel"_s), u"0"_s);
                QVERIFY(!outletOf(cell, u"valueHolderView"_s)->isVisible());
                QCOMPARE(outletOf(cell, u"iconImageView"_s)->opacity(), 0.0);
            }
        }
        QCOMPARE(stage.hits(), 0);
        stage.view->setShowsBadges(true);
        QVERIFY(stage.waitForItems(3) && stage.rowsAreLaidOut());
        QVERIFY(outletOf(stage.videosOf(0)->cellForRow(0), u"valueHolderView"_s)->isVisible());
        stage.view->setRecommendations(nullptr);
        QVERIFY(stage.waitForItems(0));
    }

    void tapReports()
    {
        Stage stage;
        QVERIFY(stage.fill(8, threeCategories));
        auto *const videos = stage.videosOf(0);
        drag(stage.window, Pointer::Touch, centreOf(videos->cellForRow(0)), {-160, 0}); // Only this row moves.
        QVERIFY(waitUntil([&] { return videos->scroller()->property("contentX").toDouble() > 0; }));
        QVERIFY(waitUntil([&] { return !videos->scroller()->property("moving").toBool(); }));
        QCOMPARE(stage.offset(), 0.0);
        videos->scrollToRow(1);
        tap(stage.window, Pointer::Touch, centreOf(videos->cellForRow(1)));
        QVERIFY(stage.waitForPicks(1));
        QCOMPARE(stage.picks->videos, ZVVideoList{stage.row(0)->recommendations()[1]});
        stage.view->setDelegate(nullptr);
        tap(stage.window, Pointer::Touch, centreOf(stage.videosOf(1)->cellForRow(0)));
        QVERIFY(flushMainQueue());
        QCOMPARE(stage.picks->videos.size(), 1U);
    }

    /// Rows and cells are reused, and carry nothing of their former content over. The pictures near the viewport are
    /// loaded and no others, each once.
    void manyRows()
    {
        Stage stage;
        const auto names = manyCategories(100);
        stage.view->setLoadsThumbnails(true);
        QVERIFY(stage.fill(20, names));
        const auto videos = stage.row(0)->recommendations();
        QVERIFY(
            waitUntil([&] { return outletOf(stage.videosOf(0)->cellForRow(0), u"iconImageView"_s)->opacity() == 1; }));
        QVERIFY(stage.hits() <= 5 * 5 && videos[19]->image().isNull());
        stage.videosOf(0)->scrollToRow(19);
        QVERIFY(waitUntil([&] { return !videos[19]->image().isNull(); }));

        turnWheel(stage.window, centreOf(stage.row(1))); // Which leaves the wheel to the table.
        QVERIFY(waitUntil([&] { return stage.offset() > 0; }));
        for (const qint64 number : {30, 60, 99, 45, 0}) {
            stage.items()->scrollToRow(number);
            QVERIFY(stage.rowsAreLaidOut());
            QCOMPARE(stage.row(number)->category(), names[number]);
            QCOMPARE(stage.videosOf(number)->scroller()->property("contentX").toDouble(), -16.0);
            QCOMPARE(textOf(stage.videosOf(number)->cellForRow(0), u"titleLable"_s),
                     stage.row(number)->recommendations()[0]->title());
        }
        QVERIFY(cellCount(stage.items(), stage.items()) <= 3 * 3); // Screenfuls, and rows of 188 in a screen of 480.
        for (const auto *row : stage.rows())
            QVERIFY(cellCount(row->videosCollectionView(), row) <= 3 * 3);
    }

    void failingThumbnails()
    {
        Stage stage;
        stage.view->setLoadsThumbnails(true);
        auto videos = stage.videos(1, {u"A"_s});
        videos.prepend(videoJson(10, stage.picture(u"none"_s, "<html>"), u"A"_s));
        QVERIFY(stage.show(videos, 1) && stage.rowsAreLaidOut());
        const auto shown = stage.row(0)->recommendations();
        QVERIFY(waitUntil([&] { return !shown[1]->image().isNull(); }));
        stage.view->setLoadsThumbnails(true); // Shown anew, but not asked for again.
        QVERIFY(stage.waitForItems(1) && stage.rowsAreLaidOut() && flushMainQueue());
        QCOMPARE(stage.sandbox.hits(u"/pictures/none"_s), 1);
        auto others = stage.videos(1, manyCategories(20));
        for (const auto &other : others)
            videos.append(other);
        QVERIFY(stage.show(videos, 21) && stage.rowsAreLaidOut());
        const auto hits = [&] { return stage.sandbox.hits(u"/pictures/none"_s); };
        QVERIFY(waitUntil([&] { return hits() == 2; }));
        stage.items()->scrollToRow(20);
        stage.items()->scrollToRow(0);
        QVERIFY2(waitUntil([&] { return stage.rowsAreLaidOut() && hits() == 3; }), "when its cell reappears");
    }

    /// A mouse user's buttons, which pick nothing.
    void scrollButtons()
    {
        Stage stage;
        QVERIFY(stage.fill(20, threeCategories));
        const auto *scroller = stage.videosOf(0)->scroller();
        const auto position = [&] { return scroller->property("contentX").toDouble(); };
        for (const int direction : {1, -1}) {
            const auto items = stage.videosOf(0)->childItems();
            const auto *button = *std::ranges::find(items, QVariant(direction),
                                                    [](const auto *item) { return item->property("direction"); });
            QTest::mouseMove(&stage.window, centreOf(stage.videosOf(0)));
            QVERIFY(waitUntil([&] { return button->opacity() == 1; }));
            tap(stage.window, Pointer::Mouse, centreOf(button));
            QVERIFY(waitUntil([&] { return direction > 0 ? position() > 250 : position() == -16; }));
        }
        QVERIFY(flushMainQueue() && stage.picks->videos.empty());
    }

    /// The visible pictures come first: what cells have waited for is cancelled when they have been scrolled past.
    void passedCellsWaitForNothing()
    {
        struct Cancelled : http::TrafficObserver
        {
            void requestWillStart(quint64, const http::Request &) override {}
            void requestDidEnd(quint64, const http::Response &, const std::optional<Error> &error) override
            {
                count += error && error->code == int(http::ErrorCode::Cancelled) ? 1 : 0;
            }
            std::atomic<int> count = 0;
        };
        Stage stage;
        stage.view->setLoadsThumbnails(true);
        const auto picture = stage.picture(u"slow"_s, pictureFile({32, 18}), 1s);
        QVERIFY(stage.show(videosJson(1, picture, manyCategories(60)), 60));
        const auto cancelled = std::make_shared<Cancelled>();
        http::Traffic::addObserver(cancelled);
        for (qint64 row = 0; row < 60; ++row) {
            stage.items()->scrollToRow(row);
            QVERIFY(stage.rowsAreLaidOut());
        }
        const auto enough = waitUntil([&] { return cancelled->count >= 30; });
        http::Traffic::removeObserver(cancelled);
        QVERIFY2(enough, qPrintable(QString::number(cancelled->count)));
        QVERIFY(waitUntil([&] { return !stage.row(59)->recommendations()[0]->image().isNull(); }));
    }

    void pressThatHaltsTheTable()
    {
        Stage stage;
        QVERIFY(stage.fill(5, manyCategories(40)));
        stage.stopAndPick();
    }

    /// A row begins at the right, whatever its length, and is scrolled by the keyboard to the left.
    void mirroredCategories()
    {
        for (const int count : {1, 40}) {
            QGuiApplication::setLayoutDirection(Qt::RightToLeft);
            Stage stage;
            QVERIFY(stage.fill(count, {u"FORYOU"_s}));
            auto *const videos = stage.videosOf(0);
            const auto right = [&](qint64 number) {
                const auto *cell = videos->cellForRow(number);
                return cell ? cell->mapRectToItem(stage.items(), QRectF({}, cell->size())).right() : -1;
            };
            constexpr double edge = 400 - 16;
            QVERIFY(waitUntil([&] { return qFuzzyCompare(right(0), edge); }));
            stage.items()->setWidth(480);
            QVERIFY2(waitUntil([&] { return qFuzzyCompare(right(0), edge + 80); }), "after a change of the width, too");

            stage.items()->forceActiveFocus(Qt::TabFocusReason);
            stage.key(Qt::Key_End);
            QCOMPARE(videos->currentRow(), count - 1);
            QVERIFY(videos->cellForRow(count - 1));
            stage.key(Qt::Key_Home);
            QCOMPARE(right(0), edge + 80);
        }
    }

    void keyboard()
    {
        Stage stage;
        QVERIFY(stage.fill(6, manyCategories(10)));
        stage.window.below.setFocus(false);
        stage.key(Qt::Key_Tab);
        QVERIFY(stage.items()->hasActiveFocus() && stage.rowsAreLaidOut());
        QCOMPARE(stage.marked(), u"0.0"_s);
        stage.walk(u"Right 0.1, Right 0.2, Down 1.0, End 1.5, Up 0.2, Home 0.0, Left 0.0, Up 0.0, PgDown 2.0"_s);
        stage.walk(u"PgUp 0.0, Down 1.5, Down 2.0, Down 3.0, Down 4.0"_s); // Each row keeps its place.
        QVERIFY(stage.offset() > 0);
        stage.key(Qt::Key_Return);
        QVERIFY(stage.waitForPicks(1));
        QCOMPARE(stage.picks->videos[0], stage.row(4)->recommendations()[0]);
    }
};

UI_TEST_MAIN(tst_CategoryView)
#include "tst_CategoryView.moc"
