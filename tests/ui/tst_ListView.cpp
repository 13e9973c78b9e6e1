#include "NativeViews.h"
#include "ZVCollectionView.h"
#include "ZVListView.h"
#include "ZVRecommendationViewFactory.h"

#include <QAccessible>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using namespace zelvano;

namespace {

/// A list in a window.
struct Stage : NativeStage
{
    const std::shared_ptr<ZVListView> list;

    explicit Stage(QSize size = {320, 480}) : Stage(ZVListView::create(), size) {}

    QJsonArray videos(int count)
    {
        const auto url = picture(u"common"_s, pictureFile({32, 18}));
        QJsonArray videos;
        for (int i = 0; i < count; ++i)
            videos.append(videoJson(i, url));
        return videos;
    }
    bool fill(int count)
    {
        view->setRecommendations(recommendationOf(videos(count)));
        return window.appear() && waitForItems(count) && mainQueueIsDone();
    }
    void key(Qt::Key key) { QTest::keyClick(&window, key); }

private:
    Stage(const std::shared_ptr<ZVListView> &made, QSize size) : NativeStage(made, size), list(made) {}
};

} // namespace

class tst_ListView : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void arrivalOrderThenServiceOrder();
    void shapeOfKnownImages();
    void tapBeforeSorting();
    void furtherRecommendations();
    void badPictures_data();
    void badPictures();
    void oddVideos();
    void manyVideos();
    void tapReports_data();
    void tapReports();
    void pressThatHaltsAFlick();
    void keyboard();
    void hostDropsTheViewWhenToldOfAPick();
};

void tst_ListView::arrivalOrderThenServiceOrder()
{
    Stage stage;
    QVERIFY(stage.window.appear());
    QCOMPARE(stage.list->inset(), 0.0);
    const auto file = pictureFile({200, 100});
    const auto recommendation =
        recommendationOf({videoJson(0, stage.picture(u"0"_s, file, 200ms)),
                          videoJson(1, stage.picture(u"1"_s, file, 400ms)), videoJson(2, stage.picture(u"2"_s, file))});
    stage.list->setRecommendations(recommendation);
    QCOMPARE(stage.list->recommendations(), recommendation);
    QVERIFY(stage.waitForItems(1));
    QCOMPARE(stage.titles(), QStringList{u"Video 2"_s});
    QVERIFY(stage.waitForItems(2));
    QCOMPARE(stage.titles(), (QStringList{u"Video 2"_s, u"Video 0"_s}));
    QVERIFY(stage.waitForItems(3));
    QCOMPARE(stage.titles(), (QStringList{u"Video 0"_s, u"Video 1"_s, u"Video 2"_s}));

    QVERIFY(qAbs(stage.list->inset() - 11.2) < 0.001);
    for (const auto &video : recommendation->videoList()) { // The records are the recommendation's own.
        QVERIFY(qAbs(video->size().width() - 143.2) < 0.001);
        QCOMPARE(video->size().height(), video->size().width()); // The cell comes before the image does.
        QVERIFY(waitUntil([&] { return !video->image().isNull(); }));
    }
    QCOMPARE(recommendation->videoList()[2]->index(), 2);
    const auto *third = stage.items()->cellForRow(2);
    QCOMPARE(third->position(), QPointF(11, 166)); // Whole pixels.
    QVERIFY(waitUntil([&] { return outletOf(third, u"iconImageView"_s)->opacity() == 1; }));
}

void tst_ListView::shapeOfKnownImages()
{
    Stage stage;
    const auto recommendation = recommendationOf({videoJson(0), videoJson(1), videoJson(2)});
    const auto wide = recommendation->videoList()[0];
    QImage image(200, 100, QImage::Format_RGB32);
    image.fill(Qt::red);
    wide->setImage(image);
    stage.list->setRecommendations(recommendation);
    for (const auto &video : recommendation->videoList())
        stage.list->insertNewRecommendation(video);
    QVERIFY(qAbs(wide->size().height() - 71.6) < 0.001);
    stage.items()->layoutIfNeeded();
    QVERIFY(stage.items()->cellForRow(2)->y() > 143); // Below the higher of the two.
}

void tst_ListView::tapBeforeSorting()
{
    Stage stage;
    QVERIFY(stage.window.appear());
    const auto late = stage.picture(u"late"_s, gifFile(), 10s);
    const auto recommendation = recommendationOf({videoJson(0, late), videoJson(1, stage.picture(u"1"_s, gifFile()))});
    stage.list->setRecommendations(recommendation);
    QVERIFY(stage.waitForItems(1));
    QCOMPARE(stage.titles(), QStringList{u"Video 1"_s});
    tap(stage.window, Pointer::Mouse, centreOf(stage.items()->cellForRow(0)));
    QVERIFY(waitUntil([&] { return stage.picks->videos.size() == 1; }));
    QCOMPARE(stage.picks->videos[0], recommendation->videoList()[0]);
    stage.list->didSelectItemAtIndexPath(nullptr, {2});
    stage.list->didSelectItemAtIndexPath(nullptr, {-1});
    QCOMPARE(stage.picks->videos.size(), 1U);
}

void tst_ListView::furtherRecommendations()
{
    Stage stage;
    QVERIFY(stage.fill(3));
    const auto path = u"/pictures/common"_s;
    const int hits = stage.sandbox.hits(path);
    auto videos = stage.videos(3);
    stage.list->setRecommendations(recommendationOf(videos));
    QVERIFY(mainQueueIsDone());
    QCOMPARE(stage.list->videoCells().size(), 3U);
    videos.prepend(videoJson(7, stage.picture(u"new"_s, gifFile())));
    stage.list->setRecommendations(recommendationOf(videos));
    QVERIFY(stage.waitForItems(4));
    QCOMPARE(stage.sandbox.hits(path), hits);
    stage.list->setRecommendations(nullptr);
    QVERIFY(mainQueueIsDone());
    QCOMPARE(stage.list->videoCells().size(), 4U);
}

void tst_ListView::badPictures_data()
{
    QTest::addColumn<QByteArray>("body"); // Null: none is fetched.
    QTest::addColumn<QString>("url");
    QTest::addColumn<bool>("comesIn");
    QTest::newRow("0 bytes") << QByteArray("") << QString() << false;
    QTest::newRow("HTML") << QByteArray("<!DOCTYPE html><p>Gone") << QString() << false;
    QTest::newRow("truncated") << pictureFile({64, 64}).chopped(30) << QString() << false;
    QTest::newRow("too large") << pictureFile({5000, 5000}, "PNG", QImage::Format_Mono) << QString() << false;
    QTest::newRow("no URL") << QByteArray() << u"http://a b/"_s << true;
    QTest::newRow("file") << QByteArray() << u"file:///etc/hostname"_s << true;
    QTest::newRow("nobody") << QByteArray() << u"http://127.0.0.1:1/"_s << true;
    QTest::newRow("loop") << QByteArray() << u"/test/redirect-loop"_s << true;
}

/// One of three. A body that is no picture is dropped without a word, so that its video stays away.
void tst_ListView::badPictures()
{
    QFETCH(const QByteArray, body);
    QFETCH(QString, url);
    QFETCH(const bool, comesIn);
    Stage stage;
    QVERIFY(stage.window.appear());
    auto videos = stage.videos(3);
    auto bad = videos[1].toObject();
    if (url.startsWith(u'/'))
        url = stage.sandbox.url(url).toString();
    bad.insert("imageUrl"_L1, body.isNull() ? url : stage.picture(u"bad"_s, body).toString());
    videos[1] = bad;
    stage.list->setRecommendations(recommendationOf(videos));
    QVERIFY(stage.waitForItems(comesIn ? 3 : 2));
    // Told by the delivery thread, and maybe after the cell has come in.
    QVERIFY(waitUntil([&] { return stage.log.beginningWith(u"Image Fetch Error "_s).size() == (comesIn ? 1 : 0); }));
    const auto &cells = stage.list->videoCells();
    QCOMPARE(std::count_if(cells.begin(), cells.end(), [](auto &video) { return video->title() == "Video 1"_L1; }),
             comesIn ? 1 : 0);
    for (const auto &video : cells)
        QCOMPARE(video->size().height(), video->size().width());
}

void tst_ListView::oddVideos()
{
    Stage stage;
    const auto url = stage.picture(u"common"_s, gifFile());
    const QStringList titles{QString(10000, u'W'), u"مقطع فيديو قصير عن البحر"_s,
                             u"👩‍👩‍👧‍👦🎬🌊"_s, u"<b>\n\n&amp;</b>"_s};
    QJsonArray videos;
    for (const auto &title : titles)
        videos.append(QJsonObject{{"title"_L1, title}, {"imageUrl"_L1, url.toString()}}); // None has an id.
    videos.append(videoJson(1, url));
    videos.append(videoJson(1, url)); // The same id.
    videos.append(QJsonObject{{"durationSec"_L1, QJsonValue::Null}, {"imageUrl"_L1, 7}, {"title"_L1, QJsonArray{}}});
    videos.append(QJsonObject());
    stage.list->setRecommendations(recommendationOf(videos));
    QVERIFY(stage.window.appear() && stage.waitForItems(videos.size()));
    QVERIFY(mainQueueIsDone());
    stage.items()->layoutIfNeeded();
    for (const auto *cell : stage.items()->shownCells()) {
        const QRectF bounds({}, cell->size());
        for (const auto &name : {u"titleLable"_s, u"durationLabel"_s, u"valueLabel"_s}) {
            const auto *label = outletOf(cell, name);
            if (label->isVisible())
                QVERIFY2(bounds.contains(label->mapRectToItem(cell, {{}, label->size()})), qPrintable(name));
        }
    }
    QCOMPARE(stage.titles().first(titles.size()), titles);
    QVERIFY(stage.log.count(u"Error(secToTime):: duration is <null>"_s) > 0);
    // Now that such videos have cells, another without an id is known, and so is one with this id.
    stage.list->setRecommendations(recommendationOf({QJsonObject(), videoJson(1, url)}));
    QVERIFY(mainQueueIsDone());
    QCOMPARE(stage.list->videoCells().size(), std::size_t(videos.size()));
}

/// To the end and back, by wheel and by finger.
void tst_ListView::manyVideos()
{
    constexpr int count = 1000;
    Stage stage;
    stage.list->setRecommendations(recommendationOf(stage.videos(count)));
    QVERIFY(stage.window.appear());
    QVERIFY(waitUntil([&] { return stage.list->videoCells().size() == count; }, 60s));
    QVERIFY(stage.waitForItems(count) && mainQueueIsDone());
    const qint64 screenful = 2 * 4; // Columns, and lines that a screen of 480 shows of 154 each.
    const double length = stage.items()->contentSize().height();
    QVERIFY(length > 500 * 154 && length < 500 * 155);

    const QPoint middle(160, 240);
    for (int i = 0; i < 20; ++i) {
        const auto before = stage.offset();
        drag(stage.window, Pointer::Touch, {160, 400}, {0, -300});
        QVERIFY(waitUntil([&] { return stage.offset() > before; }));
    }
    const auto touched = stage.offset();
    QWheelEvent wheel(middle, middle, {0, -480}, {0, -480}, Qt::NoButton, Qt::NoModifier, Qt::NoScrollPhase, false);
    QCoreApplication::sendEvent(&stage.window, &wheel);
    QVERIFY(waitUntil([&] { return stage.offset() > touched; }));
    for (qint64 row = 0; row < count; row += 7) {
        stage.items()->scrollToRow(row);
        QCOMPARE(textOf(stage.items()->cellForRow(row), u"titleLable"_s), u"Video %1"_s.arg(row));
        QCOMPARE(textOf(stage.items()->cellForRow(row), u"valueLabel"_s), QString::number(row));
    }
    stage.items()->scrollToRow(count - 1);
    QVERIFY(qAbs(stage.offset() - (length - 480)) < 1);
    stage.items()->scrollToRow(0);
    QCOMPARE(textOf(stage.items()->cellForRow(0), u"titleLable"_s), u"Video 0"_s);
    QVERIFY2(stage.items()->cellCount() <= 3 * screenful, qPrintable(QString::number(stage.items()->cellCount())));
}

void tst_ListView::tapReports_data()
{
    QTest::addColumn<Pointer>("pointer");
    QTest::newRow("mouse") << Pointer::Mouse;
    QTest::newRow("touch") << Pointer::Touch;
}

void tst_ListView::tapReports()
{
    QFETCH(const Pointer, pointer);
    Stage stage;
    QVERIFY(stage.fill(10));
    tap(stage.window, pointer, centreOf(stage.items()->cellForRow(3)));
    QVERIFY(waitUntil([&] { return !stage.picks->videos.empty(); }));
    QCOMPARE(stage.picks->videos[0], stage.list->recommendations()->videoList()[3]);
    QCOMPARE(stage.window.below.presses + stage.window.below.touches, 0);

    drag(stage.window, pointer, centreOf(stage.items()->cellForRow(2)), {0, -120}); // Scrolls, and picks nothing.
    QVERIFY(waitUntil([&] { return stage.offset() > 0; }));
    QVERIFY(waitUntil([&] { return !stage.items()->scroller()->property("moving").toBool(); }));
    QCOMPARE(stage.picks->videos.size(), 1U);
    stage.view->setDelegate(nullptr);
    tap(stage.window, pointer, centreOf(stage.items()->cellForRow(4)));
    QVERIFY(mainQueueIsDone());
    QCOMPARE(stage.picks->videos.size(), 1U);
}

void tst_ListView::pressThatHaltsAFlick()
{
    Stage stage;
    QVERIFY(stage.fill(60));
    auto *const scroller = stage.items()->scroller();
    QMetaObject::invokeMethod(scroller, "flick", Q_ARG(qreal, 0), Q_ARG(qreal, -1500));
    QVERIFY(waitUntil([&] { return stage.offset() > 50; }));
    const auto middle = [&] {
        for (const auto *cell : stage.items()->shownCells()) {
            if (centreOf(cell).y() > 100 && centreOf(cell).y() < 380)
                return centreOf(cell);
        }
        return QPoint();
    };
    tap(stage.window, Pointer::Touch, middle());
    QVERIFY(waitUntil([&] { return !scroller->property("moving").toBool(); }));
    QVERIFY(mainQueueIsDone());
    QVERIFY(stage.picks->videos.empty());
    tap(stage.window, Pointer::Touch, middle());
    QVERIFY(waitUntil([&] { return stage.picks->videos.size() == 1; }));
}

void tst_ListView::keyboard()
{
    Stage stage;
    QVERIFY(stage.fill(40));
    const auto marked = [&] {
        QList<qint64> rows;
        for (const auto *cell : stage.items()->shownCells()) {
            if (cell->isCurrent())
                rows.append(cell->row());
        }
        return rows;
    };
    QCOMPARE(marked(), QList<qint64>());
    stage.window.below.setFocus(false);
    stage.key(Qt::Key_Tab);
    QVERIFY(stage.items()->hasActiveFocus());
    QCOMPARE(marked(), QList<qint64>{0});
    const std::vector<std::pair<Qt::Key, qint64>> steps{
        {Qt::Key_Right, 1}, {Qt::Key_Down, 3},  {Qt::Key_Left, 2}, {Qt::Key_Up, 0},       {Qt::Key_Up, 0},
        {Qt::Key_End, 39},  {Qt::Key_Down, 39}, {Qt::Key_Home, 0}, {Qt::Key_PageDown, 6}, {Qt::Key_PageUp, 0},
    };
    for (const auto &[key, row] : steps) {
        stage.key(key);
        QCOMPARE(stage.items()->currentRow(), row);
        QCOMPARE(marked(), QList<qint64>{row});
    }
    for (const auto key : {Qt::Key_Return, Qt::Key_Space, Qt::Key_Enter})
        stage.key(key);
    QVERIFY(waitUntil([&] { return stage.picks->videos.size() == 3; }));
    stage.window.below.forceActiveFocus();
    QCOMPARE(marked(), QList<qint64>());
}

void tst_ListView::hostDropsTheViewWhenToldOfAPick()
{
    NativeStage stage(ZVRecommendationViewFactory::recommendationViewForType(0));
    const auto url = stage.picture(u"common"_s, gifFile());
    stage.view->setRecommendations(recommendationOf({videoJson(0, url), videoJson(1, url)}));
    QVERIFY(stage.window.appear() && stage.waitForItems(2));
    const QPointer<QQuickItem> item(stage.view->view());
    stage.picks->onPick = [&] { stage.view.reset(); };
    tap(stage.window, Pointer::Touch, centreOf(stage.items()->cellForRow(1)));
    QVERIFY(waitUntil([&] { return !item; }));
    QCOMPARE(stage.picks->videos.size(), 1U);
}

int main(int argc, char **argv)
{
    return runUiTest<tst_ListView>(argc, argv);
}
#include "tst_ListView.moc"
