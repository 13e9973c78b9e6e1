#include "NativeViews.h"
#include "ZVCollectionView.h"
#include "ZVListView.h"

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using namespace zelvano;

using Stage = NativeStage<ZVListView>;

class tst_ListView : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void arrivalOrderThenServiceOrder()
    {
        Stage stage;
        QVERIFY(stage.window.appear());
        QCOMPARE(stage.view->inset(), 0.0);
        const auto file = pictureFile({200, 100});
        const auto recommendation = recommendationOf({videoJson(0, stage.picture(u"0"_s, file, 500ms)),
                                                      videoJson(1, stage.picture(u"1"_s, file, 1000ms)),
                                                      videoJson(2, stage.picture(u"2"_s, file))});
        stage.view->setRecommendations(recommendation);
        QVERIFY(stage.waitForItems(1));
        QCOMPARE(stage.titles(), QStringList{u"Video 2"_s});
        // By row: hosts of the unsorted list rely on the recommendation's order.
        stage.cell(0)->activate();
        QVERIFY(stage.waitForPicks(1));
        QCOMPARE(stage.picks->videos[0], recommendation->videoList()[0]);
        QVERIFY(stage.waitForItems(2));
        QCOMPARE(stage.titles(), (QStringList{u"Video 2"_s, u"Video 0"_s}));
        QVERIFY(stage.waitForItems(3));
        QCOMPARE(stage.titles(), (QStringList{u"Video 0"_s, u"Video 1"_s, u"Video 2"_s}));

        QVERIFY(qAbs(stage.view->inset() - 11.2) < 0.001);
        for (const auto &video : recommendation->videoList()) { // The records are the recommendation's own.
            QVERIFY(qAbs(video->size().width() - 143.2) < 0.001);
            QCOMPARE(video->size().height(), video->size().width()); // The cell comes before the image does.
            QVERIFY(waitUntil([&] { return !video->image().isNull(); }));
        }
        QCOMPARE(stage.cell(2)->position(), QPointF(11, 166)); // Whole pixels.
        QVERIFY(waitUntil([&] { return outletOf(stage.cell(2), u"iconImageView"_s)->opacity() == 1; }));
        for (const qint64 row : {3, -1})
            stage.view->didSelectItemAtIndexPath(nullptr, {row});
        QCOMPARE(stage.picks->videos.size(), 1U);
    }

    void shapeOfKnownImages()
    {
        Stage stage;
        const auto recommendation = recommendationOf(videosJson(3));
        const auto wide = recommendation->videoList()[0];
        wide->setImage(QImage(200, 100, QImage::Format_RGB32));
        stage.view->setRecommendations(recommendation);
        for (const auto &video : recommendation->videoList())
            stage.view->insertNewRecommendation(video);
        QVERIFY(qAbs(wide->size().height() - 71.6) < 0.001);
        stage.items()->layoutIfNeeded();
        QVERIFY(stage.cell(2)->y() > 143); // Below the higher of the two.
    }

    void furtherRecommendations()
    {
        Stage stage;
        QVERIFY(stage.fill(3));
        const int hits = stage.hits();
        auto videos = stage.videos(3);
        stage.view->setRecommendations(recommendationOf(videos));
        QVERIFY(flushMainQueue());
        QCOMPARE(stage.view->videoCells().size(), 3U);
        videos.prepend(videoJson(7, stage.picture(u"new"_s, gifFile())));
        QVERIFY(stage.show(videos, 4));
        QCOMPARE(stage.hits(), hits);
        stage.view->setRecommendations(nullptr);
        QVERIFY(flushMainQueue());
        QCOMPARE(stage.view->videoCells().size(), 4U);
    }

    /// A body that is no picture is dropped without a word, so that its video stays away.
    void badPictures()
    {
        Stage stage;
        auto videos = stage.videos(2);
        const QList<QByteArray> bodies{"", "<!DOCTYPE html><p>Gone", pictureFile({64, 64}).chopped(30),
                                       pictureFile({5000, 5000}, "PNG", QImage::Format_Mono)};
        for (const auto &body : bodies)
            videos.append(videoJson(100, stage.picture(u"bad%1"_s.arg(videos.size()), body)));
        const QStringList notFetched{u"http://a b/"_s, u"file:///etc/hostname"_s, u"http://127.0.0.1:1/"_s};
        for (const auto &address : notFetched) {
            auto video = videoJson(static_cast<int>(videos.size()));
            video.insert("imageUrl"_L1, address);
            videos.append(video);
        }
        videos.append(videoJson(2, stage.picture(u"good"_s, gifFile()))); // Asked for last.
        QVERIFY(stage.show(videos, 3 + notFetched.size()));
        // Told by the delivery thread, and maybe after the cell has come in.
        QVERIFY(
            waitUntil([&] { return stage.log.beginningWith(u"Image Fetch Error "_s).size() == notFetched.size(); }));
        for (const auto &video : stage.view->videoCells()) {
            QVERIFY(video->title() != "Video 100"_L1);
            QCOMPARE(video->size().height(), video->size().width());
        }
    }

    void oddVideos()
    {
        Stage stage;
        const auto url = stage.picture(u"odd"_s, gifFile());
        const QStringList titles{QString(10000, u'W'), u"مقطع فيديو قصير عن البحر"_s,
                                 u"👩‍👩‍👧‍👦🎬🌊"_s, u"<b>\n\n&amp;</b>"_s};
        QJsonArray videos;
        for (const auto &title : titles)
            videos.append(QJsonObject{{"title"_L1, title}, {"imageUrl"_L1, url.toString()}}); // None has an id.
        videos.append(videoJson(1, url));
        videos.append(videoJson(1, url)); // The same id.
        videos.append(
            QJsonObject{{"durationSec"_L1, QJsonValue::Null}, {"imageUrl"_L1, 7}, {"title"_L1, QJsonArray{}}});
        videos.append(QJsonObject());
        QVERIFY(stage.show(videos, videos.size()));
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
        stage.view->setRecommendations(recommendationOf({QJsonObject(), videoJson(1, url)}));
        QVERIFY(flushMainQueue());
        QCOMPARE(stage.view->videoCells().size(), std::size_t(videos.size()));
    }

    /// To the end and back.
    void manyVideos()
    {
        constexpr int count = 1000;
        Stage stage;
        stage.view->setRecommendations(recommendationOf(stage.videos(count)));
        QVERIFY(stage.window.appear());
        QVERIFY(waitUntil([&] { return stage.view->videoCells().size() == count; }, 60s));
        QVERIFY(stage.waitForItems(count) && flushMainQueue());
        const double length = stage.items()->contentSize().height();
        QVERIFY(length > 500 * 154 && length < 500 * 155);

        turnWheel(stage.window, {160, 240});
        QVERIFY(waitUntil([&] { return stage.offset() > 0; }));
        for (qint64 row = 0; row < count; row += 7) {
            stage.items()->scrollToRow(row);
            QCOMPARE(textOf(stage.cell(row), u"titleLable"_s), u"Video %1"_s.arg(row));
            QCOMPARE(textOf(stage.cell(row), u"valueLabel"_s), QString::number(row));
        }
        stage.items()->scrollToRow(count - 1);
        QVERIFY(qAbs(stage.offset() - (length - 480)) < 1);
        stage.items()->scrollToRow(0);
        QCOMPARE(textOf(stage.cell(0), u"titleLable"_s), u"Video 0"_s);
        QVERIFY(stage.items()->cellCount() <= 3 * 2 * 4); // Screenfuls, columns, and lines of 154 in a screen of 480.
    }

    void tapReports()
    {
        for (const auto pointer : {Pointer::Mouse, Pointer::Touch}) {
            Stage stage;
            QVERIFY(stage.fill(10));
            tap(stage.window, pointer, centreOf(stage.cell(3)));
            QVERIFY(stage.waitForPicks(1));
            QCOMPARE(stage.picks->videos[0], stage.view->recommendations()->videoList()[3]);
            QCOMPARE(stage.window.below.presses + stage.window.below.touches, 0);

            drag(stage.window, pointer, centreOf(stage.cell(2)), {0, -120}); // Scrolls, and picks nothing.
            QVERIFY(waitUntil([&] { return stage.offset() > 0 && stage.isAtRest(); }));
            stage.view->setDelegate(nullptr);
            tap(stage.window, pointer, centreOf(stage.cell(4)));
            QVERIFY(flushMainQueue());
            QCOMPARE(stage.picks->videos.size(), 1U);
        }
    }

    void pressThatHaltsAFlick()
    {
        Stage stage;
        QVERIFY(stage.fill(60));
        QMetaObject::invokeMethod(stage.items()->scroller(), "flick", Q_ARG(qreal, 0), Q_ARG(qreal, -1500));
        QVERIFY(waitUntil([&] { return stage.offset() > 50; }));
        const auto tapInTheMiddle = [&] {
            const auto cells = stage.items()->shownCells();
            tap(stage.window, Pointer::Touch, centreOf(cells[cells.size() / 2]));
        };
        tapInTheMiddle();
        QVERIFY(waitUntil([&] { return stage.isAtRest(); }));
        QVERIFY(flushMainQueue());
        QVERIFY(stage.picks->videos.empty());
        tapInTheMiddle();
        QVERIFY(stage.waitForPicks(1));
    }

    void keyboard()
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
            QCOMPARE(marked(), QList<qint64>{row});
        }
        for (const auto key : {Qt::Key_Return, Qt::Key_Space, Qt::Key_Enter})
            stage.key(key);
        QVERIFY(stage.waitForPicks(3));
        stage.window.below.forceActiveFocus();
        QCOMPARE(marked(), QList<qint64>());
    }
};

UI_TEST_MAIN(tst_ListView)
#include "tst_ListView.moc"
