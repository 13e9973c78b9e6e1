#include "NativeViews.h"
#include "ZVCategoryView.h"
#include "ZVListView.h"
#include "ZVRecommendationTableViewCell.h"
#include "ZVRecommendationViewFactory.h"

#include <QAccessible>
#include <QTest>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using namespace zelvano;

namespace {

/// A table of categories in a window.
struct Stage : NativeStage
{
    const std::shared_ptr<ZVCategoryView> table;

    Stage() : Stage(ZVCategoryView::create()) {}

    /// Of each category as many.
    QJsonArray videos(const QStringList &categories, int count)
    {
        const auto url = picture(u"common"_s, pictureFile({32, 18}));
        QJsonArray videos;
        for (int i = 0; i < count; ++i) {
            for (const auto &category : categories)
                videos.append(videoJson(static_cast<int>(videos.size()), url, category));
        }
        return videos;
    }
    bool fill(const QStringList &categories, int count)
    {
        view->setRecommendations(recommendationOf(videos(categories, count)));
        return window.appear() && waitForItems(categories.size()) && rowsAreLaidOut();
    }
    bool rowsAreLaidOut()
    {
        for (auto *row : rows())
            row->videosCollectionView()->layoutIfNeeded();
        return !rows().empty();
    }
    ZVRecommendationTableViewCell *row(qint64 number) const
    {
        return qobject_cast<ZVRecommendationTableViewCell *>(items()->cellForRow(number));
    }
    std::vector<ZVRecommendationTableViewCell *> rows() const
    {
        std::vector<ZVRecommendationTableViewCell *> rows;
        for (auto *cell : items()->shownCells())
            rows.push_back(qobject_cast<ZVRecommendationTableViewCell *>(cell));
        return rows;
    }
    ZVItemViewCell *cell(qint64 rowNumber, qint64 column) const
    {
        return row(rowNumber)->videosCollectionView()->cellForRow(column);
    }
    int hits() const { return sandbox.hits(u"/pictures/common"_s); }

private:
    explicit Stage(const std::shared_ptr<ZVCategoryView> &made) : NativeStage(made, {400, 480}), table(made) {}
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
    void factory()
    {
        for (const qint64 type : {0, 1})
            QVERIFY(ZVRecommendationViewFactory::recommendationViewForType(type)->view());
        QVERIFY(std::dynamic_pointer_cast<ZVListView>(ZVRecommendationViewFactory::recommendationViewForType(0)));
        for (const qint64 type : {2, -1})
            QVERIFY(!ZVRecommendationViewFactory::recommendationViewForType(type));
    }

    void rows()
    {
        Stage stage;
        QVERIFY(stage.fill(threeCategories, 2));
        const auto recommendation = stage.table->recommendations();
        const auto categories = recommendation->categories();
        QCOMPARE(categories.size(), 3);
        for (qint64 i = 0; i < 3; ++i) {
            const auto *row = stage.row(i);
            QCOMPARE(row->category(), categories[i]);
            QCOMPARE(row->categoryLabel()->property("text").toString(), categories[i]);
            QCOMPARE(row->recommendations(), *recommendation->videosForCategory(categories[i]));
            QCOMPARE(row->width(), 400.0);
            for (qint64 column = 0; column < 2; ++column) { // Nobody numbers these, and nobody fetches for them.
                QCOMPARE(textOf(stage.cell(i, column), u"valueLabel"_s), u"0"_s);
                QCOMPARE(outletOf(stage.cell(i, column), u"iconImageView"_s)->opacity(), 0.0);
            }
        }
        QVERIFY(mainQueueIsDone());
        QCOMPARE(stage.hits(), 0);
        stage.view->setRecommendations(nullptr);
        QVERIFY(stage.waitForItems(0));
    }

    void oddVideos()
    {
        Stage stage;
        auto videos = stage.videos({u""_s, u"مستحسن"_s, QString(10000, u'C')}, 1);
        videos.append(videoJson(9)); // Without a category.
        stage.view->setRecommendations(recommendationOf(videos));
        QVERIFY(stage.window.appear() && stage.waitForItems(3) && stage.rowsAreLaidOut());
        for (const auto *row : stage.rows()) {
            QVERIFY(row->categoryLabel()->width() <= 400 && row->categoryLabel()->height() < 40);
            QCOMPARE(row->videosCollectionView()->itemCount(), 1);
        }
    }

    void tapReports_data()
    {
        QTest::addColumn<Pointer>("pointer");
        QTest::newRow("mouse") << Pointer::Mouse;
        QTest::newRow("touch") << Pointer::Touch;
    }

    void tapReports()
    {
        QFETCH(const Pointer, pointer);
        Stage stage;
        QVERIFY(stage.fill(threeCategories, 8));
        auto *const videos = stage.row(0)->videosCollectionView();
        drag(stage.window, pointer, centreOf(stage.cell(0, 0)), {-160, 0}); // Only this row moves.
        QVERIFY(waitUntil([&] { return videos->scroller()->property("contentX").toDouble() > 0; }));
        QVERIFY(waitUntil([&] { return !videos->scroller()->property("moving").toBool(); }));
        QCOMPARE(stage.offset(), 0.0);
        videos->scrollToRow(1);
        tap(stage.window, pointer, centreOf(stage.cell(0, 1)));
        QVERIFY(waitUntil([&] { return !stage.picks->videos.empty(); }));
        QCOMPARE(stage.picks->videos, ZVVideoList{stage.row(0)->recommendations()[1]});

        const auto other = std::make_shared<Picks>();
        stage.view->setDelegate(other);
        tap(stage.window, pointer, centreOf(stage.cell(1, 0)));
        QVERIFY(waitUntil([&] { return !other->videos.empty(); }));
        QCOMPARE(stage.picks->videos.size(), 1U);
        stage.view->setDelegate(nullptr);
        tap(stage.window, pointer, centreOf(stage.cell(1, 0)));
        QVERIFY(mainQueueIsDone());
        QCOMPARE(other->videos.size(), 1U);
    }

    /// Rows and cells are reused, and carry nothing of their former content over.
    void manyRows()
    {
        Stage stage;
        const auto names = manyCategories(100);
        QVERIFY(stage.fill(names, 20));
        stage.row(0)->videosCollectionView()->scrollToRow(19);
        drag(stage.window, Pointer::Touch, {200, 400}, {0, -300});
        QVERIFY(waitUntil([&] { return stage.offset() > 0; }));
        const auto before = stage.offset();
        const QPoint onRow = centreOf(stage.row(3)); // Which leaves the wheel to the table.
        QWheelEvent wheel(onRow, onRow, {0, -480}, {0, -480}, Qt::NoButton, Qt::NoModifier, Qt::NoScrollPhase, false);
        QCoreApplication::sendEvent(&stage.window, &wheel);
        QVERIFY(waitUntil([&] { return stage.offset() > before; }));
        for (const qint64 number : {30, 60, 99, 45, 0}) {
            stage.items()->scrollToRow(number);
            QVERIFY(stage.rowsAreLaidOut());
            const auto *row = stage.row(number);
            QCOMPARE(row->category(), names[number]);
            QCOMPARE(row->videosCollectionView()->scroller()->property("contentX").toDouble(), -16.0);
            QCOMPARE(textOf(stage.cell(number, 0), u"titleLable"_s), row->recommendations()[0]->title());
        }
        QVERIFY(stage.items()->cellCount() <= 3 * 3); // Screenfuls, and rows of 188 in a screen of 480.
        for (const auto *row : stage.rows())
            QVERIFY(row->videosCollectionView()->cellCount() <= 3 * 3);
    }

    /// Those near the viewport and no others, each once.
    void loadsThumbnails()
    {
        Stage stage;
        QVERIFY(!stage.table->loadsThumbnails());
        stage.table->setLoadsThumbnails(true);
        QVERIFY(stage.fill(manyCategories(40), 25));
        const auto first = stage.row(0)->recommendations()[0];
        QVERIFY(waitUntil([&] { return !first->image().isNull(); }));
        QVERIFY(waitUntil([&] { return outletOf(stage.cell(0, 0), u"iconImageView"_s)->opacity() == 1; }));
        QVERIFY(stage.hits() > 0 && stage.hits() <= 5 * 5);
        QVERIFY(stage.row(0)->recommendations()[24]->image().isNull());
        stage.row(0)->videosCollectionView()->scrollToRow(24);
        QVERIFY(waitUntil([&] { return !stage.row(0)->recommendations()[24]->image().isNull(); }));
    }

    void failingThumbnails()
    {
        Stage stage;
        stage.table->setLoadsThumbnails(true);
        const auto none = stage.picture(u"none"_s, "<html>");
        auto videos = stage.videos({u"A"_s}, 3);
        videos.prepend(videoJson(10, none, u"A"_s));
        videos.prepend(videoJson(11, QUrl(u"http://127.0.0.1:1/"_s), u"A"_s));
        stage.view->setRecommendations(recommendationOf(videos));
        QVERIFY(stage.window.appear() && stage.waitForItems(1) && stage.rowsAreLaidOut());
        const auto shown = stage.row(0)->recommendations();
        QVERIFY(waitUntil([&] { return !shown[2]->image().isNull(); }));
        QVERIFY(waitUntil([&] { return stage.log.beginningWith(u"Image Fetch Error "_s).size() == 1; }));
        QVERIFY(shown[0]->image().isNull() && shown[1]->image().isNull());
        stage.table->setLoadsThumbnails(true); // Shown anew, but not asked for again.
        QVERIFY(stage.waitForItems(1) && stage.rowsAreLaidOut() && mainQueueIsDone());
        QCOMPARE(stage.sandbox.hits(u"/pictures/none"_s), 1);
    }

    void keyboard()
    {
        Stage stage;
        QVERIFY(stage.fill(manyCategories(10), 6));
        const auto marked = [&] {
            QStringList found;
            for (const auto *row : stage.rows()) {
                for (const auto *cell : row->videosCollectionView()->shownCells()) {
                    if (cell->isCurrent())
                        found.append(u"%1.%2"_s.arg(row->row()).arg(cell->row()));
                }
            }
            return found;
        };
        stage.window.below.setFocus(false);
        QTest::keyClick(&stage.window, Qt::Key_Tab);
        QVERIFY(stage.items()->hasActiveFocus() && stage.rowsAreLaidOut());
        QCOMPARE(marked(), QStringList{u"0.0"_s});
        const std::vector<std::pair<Qt::Key, QString>> steps{
            {Qt::Key_Right, u"0.1"_s},    {Qt::Key_Right, u"0.2"_s},  {Qt::Key_Down, u"1.0"_s}, {Qt::Key_End, u"1.5"_s},
            {Qt::Key_Up, u"0.2"_s},       {Qt::Key_Home, u"0.0"_s},   {Qt::Key_Left, u"0.0"_s}, {Qt::Key_Up, u"0.0"_s},
            {Qt::Key_PageDown, u"2.0"_s}, {Qt::Key_PageUp, u"0.0"_s},
        };
        for (const auto &[key, place] : steps) {
            QTest::keyClick(&stage.window, key);
            QVERIFY(stage.rowsAreLaidOut());
            QCOMPARE(marked(), QStringList{place});
        }
        for (int i = 0; i < 9; ++i)
            QTest::keyClick(&stage.window, Qt::Key_Down);
        QVERIFY(stage.rowsAreLaidOut());
        QCOMPARE(marked(), QStringList{u"9.0"_s});
        QVERIFY(stage.offset() > 0);
        QTest::keyClick(&stage.window, Qt::Key_Return);
        QVERIFY(waitUntil([&] { return !stage.picks->videos.empty(); }));
        QCOMPARE(stage.picks->videos[0], stage.row(9)->recommendations()[0]);
    }

    void accessibility()
    {
        Stage stage;
        QVERIFY(stage.fill(threeCategories, 2));
        QCOMPARE(QAccessible::queryAccessibleInterface(stage.items())->role(), QAccessible::List);
        auto *const row = QAccessible::queryAccessibleInterface(stage.row(0)->childItems().first());
        QCOMPARE(row->role(), QAccessible::Grouping);
        QCOMPARE(row->text(QAccessible::Name), stage.row(0)->category());
    }

    void dropWhileShown()
    {
        Stage stage;
        stage.table->setLoadsThumbnails(true);
        QVERIFY(stage.fill(threeCategories, 2));
        auto table = ZVCategoryView::create();
        const QPointer<QQuickItem> item(table->view());
        table->setLoadsThumbnails(true);
        item->setParentItem(stage.window.contentItem());
        item->setSize({400, 480});
        const auto recommendation = recommendationOf(stage.videos(threeCategories, 2));
        table->setRecommendations(recommendation);
        const auto first = recommendation->videosForCategory(u"FORYOU"_s)->front();
        QVERIFY(waitUntil([&] { return !first->image().isNull(); }));
        table.reset();
        QVERIFY(!item);
        QVERIFY(mainQueueIsDone());
    }
};

int main(int argc, char **argv)
{
    return runUiTest<tst_CategoryView>(argc, argv);
}
#include "tst_CategoryView.moc"
