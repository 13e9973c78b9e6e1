#include "NativeViews.h"
#include <ZelvanoUI/ZVCategoryView.h>
#include <ZelvanoUI/ZVListView.h>
#include <ZelvanoUI/ZVRecommendationViewFactory.h>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using namespace zelvano;

using Stage = NativeStage<ZVListView>;

class tst_ListView : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void cleanup() { QGuiApplication::setLayoutDirection(Qt::LayoutDirectionAuto); }
    void arrivalOrderThenServiceOrder()
    {
        Stage stage;
        QVERIFY(stage.window.appear());
        const auto file = pictureFile({200, 100});
        const auto recommendation = recommendationOf({videoJson(0, stage.picture(u"0"_s, file, 500ms)),
                                                      videoJson(1, stage.picture(u"1"_s, file, 1000ms)),
                                                      videoJson(2, stage.picture(u"2"_s, file))});
        stage.view->setRecommendations(recommendation);
        QVERIFY(stage.waitForItems(1));
        QCOMPARE(stage.titles(), QStringList{u"Video 2"_s});
        // By row: hosts of the unsorted list rely on the recommendation's order.
        stage.activate(0);
        QVERIFY(stage.waitForPicks(1));
        QCOMPARE(stage.picks->videos[0], recommendation->videoList()[0]);
        QVERIFY(stage.waitForItems(2));
        QCOMPARE(stage.titles(), (QStringList{u"Video 2"_s, u"Video 0"_s}));
        QVERIFY(stage.waitForItems(3));
        QCOMPARE(stage.titles(), (QStringList{u"Video 0"_s, u"Video 1"_s, u"Video 2"_s}));

        for (const auto &video : recommendation->videoList()) { // The records are the recommendation's own.
            QVERIFY(qAbs(video->size().width() - 143.2) < 0.001);
            QCOMPARE(video->size().height(), video->size().width()); // The cell comes before the image does.
            QVERIFY(waitUntil([&] { return !video->image().isNull(); }));
        }
        QCOMPARE(stage.place(2), QPointF(11, 165)); // Whole pixels.
        QVERIFY(waitUntil([&] { return outletOf(stage.cell(2), u"iconImageView"_s)->opacity() == 1; }));
        stage.view->setRecommendations(nullptr); // Its cells stay, and have no video any more.
        stage.activate(0);
        QVERIFY(waitUntil(
            [&] { return stage.log.beginningWith(u"Error: the recommendation has no video "_s).size() == 1; }));
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
        QVERIFY(stage.place(2).y() > 143); // Below the higher of the two.
        for (const qint64 row : {0, 1, 2})
            QCOMPARE(textOf(stage.cell(row), u"valueLabel"_s), QString::number(row));
        stage.items()->setWidth(640);
        QVERIFY(qAbs(wide->size().width() - 286.4) < 0.001 && qAbs(wide->size().height() - 143.2) < 0.001);
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

        stage.items()->setWidth(0); // All would stand in one line of no height.
        stage.items()->layoutIfNeeded();
        QVERIFY(stage.items()->shownCells().empty());
    }

    /// A body that is no picture is dropped without a word, so that its video stays away; with an error it comes.
    void badPictures()
    {
        Stage stage;
        QVERIFY(stage.show({videoJson(0, stage.picture(u"bad"_s, "<!DOCTYPE html><p>Gone")),
                            videoJson(1, QUrl(u"file:///etc/hostname"_s)),
                            videoJson(2, stage.picture(u"good"_s, gifFile()))}, // Asked for last.
                           2));
        // Told by the delivery thread, and maybe after the cell has come in.
        QVERIFY(waitUntil([&] { return stage.log.beginningWith(u"Image Fetch Error "_s).size() == 1; }));
        QCOMPARE(stage.titles(), (QStringList{u"Video 1"_s, u"Video 2"_s}));
        for (const auto &video : stage.view->videoCells())
            QCOMPARE(video->size().height(), video->size().width());
    }

    void oddVideos()
    {
        Stage stage;
        const auto url = stage.picture(u"odd"_s, gifFile());
        const QStringList titles{QString(10000, u'W'), u"مقطع فيديو قصير عن البحر"_s,
                                 u"👩‍👩‍👧‍👦🎬🌊"_s, u"<b>\n\n&amp;</b>"_s};
        QJsonArray videos{videoJson(1, url), videoJson(1, url), QJsonObject()}; // The same id, and none.
        for (const auto &title : titles)
            videos.prepend(QJsonObject{{"title"_L1, title}, {"imageUrl"_L1, url.toString()}});
        videos.append(QJsonObject{{"durationSec"_L1, {}}, {"imageUrl"_L1, 7}, {"title"_L1, QJsonArray{}}});
        QVERIFY(stage.show(videos, videos.size()));
        stage.items()->layoutIfNeeded();
        for (const auto *cell : stage.items()->shownCells()) {
            const auto *label = outletOf(cell, u"titleLable"_s);
            QVERIFY(QRectF({}, cell->size()).contains(label->mapRectToItem(cell, {{}, label->size()})));
        }
        QCOMPARE(stage.titles().first(titles.size()), QStringList(titles.rbegin(), titles.rend()));
        QVERIFY(stage.log.count(u"Error(secToTime):: duration is <null>"_s) > 0);
        // Now that such videos have cells, another without an id is known, and so is one with this id.
        stage.view->setRecommendations(recommendationOf({QJsonObject(), videoJson(1, url)}));
        QVERIFY(flushMainQueue());
        QCOMPARE(stage.view->videoCells().size(), std::size_t(videos.size()));
    }

    /// Only pictures near the viewport are decoded, in the size that their cells show.
    void picturesAreBounded()
    {
        Stage stage;
        QVERIFY(stage.show(videosJson(120, stage.picture(u"large"_s, pictureFile({1200, 600}, "JPG"))), 120));
        const auto videos = stage.view->videoCells();
        const auto isDecoded = [](const auto &video) { return !video->image().isNull(); };
        const auto decoded = [&] { return std::ranges::count_if(videos, isDecoded); };
        QVERIFY(waitUntil([&] { return isDecoded(videos[0]) && decoded() < 60; }));
        // Covers 143 points, in steps of 64 pixels, once the cell has its final size.
        QVERIFY(waitUntil([&] { return videos[0]->image().size() == QSize(384, 192); }));
        const QImage hosts(2, 1, QImage::Format_RGB32);
        videos[0]->setImage(hosts);
        for (const qint64 row : {60, 119, 30}) {
            stage.items()->scrollToRow(row);
            QVERIFY(waitUntil([&] { return isDecoded(videos[std::size_t(row)]); }));
            QVERIFY(decoded() < 60);
        }
        QCOMPARE(videos[0]->image(), hosts);
        stage.items()->setWidth(640);
        stage.items()->scrollToRow(31);
        QVERIFY2(waitUntil([&] { return videos[31]->image().width() == 640; }),
                 "as the cell grows, so does its picture");
        QVERIFY(stage.sandbox.hits(u"/pictures/large"_s) <= 120); // Released ones come from the cache.
    }

    void theEndCancels()
    {
        Stage stage;
        QJsonArray videos;
        for (int i = 0; i < 60; ++i)
            videos.append(videoJson(i, stage.picture(u"%1"_s.arg(i), pictureFile({32, 18}), 50ms)));
        stage.view->setRecommendations(recommendationOf(videos));
        QVERIFY(waitUntil([&] { return !stage.view->videoCells().empty(); }));
        stage.view.reset();
        const auto other = std::make_shared<ZVVideoParams>(videoJson(0, stage.picture(u"other"_s, gifFile(), 200ms)));
        ZVImagesFetcher::fetchThumbnail(other, {});
        QVERIFY(waitUntil([&] { return !other->image().isNull(); })); // After all that waited.
        int hits = 0;
        for (int i = 0; i < 60; ++i)
            hits += stage.sandbox.hits(u"/pictures/%1"_s.arg(i));
        QVERIFY2(hits <= 24, qPrintable(QString::number(hits)));
    }

    void tapReports()
    {
        for (const auto pointer : {Pointer::Mouse, Pointer::Touch}) {
            Stage stage;
            QVERIFY(stage.fill(10));
            tap(stage.window, pointer, centreOf(stage.cell(3)));
            QVERIFY(stage.waitForPicks(1));
            QCOMPARE(stage.picks->videos[0], stage.view->recommendations()->videoList()[3]);
            QCOMPARE(stage.window.below.presses, 0);

            drag(stage.window, pointer, centreOf(stage.cell(2)), {0, -120}); // Scrolls, and picks nothing.
            QVERIFY(waitUntil([&] { return stage.offset() > 0 && stage.isAtRest(); }));
            QCOMPARE(stage.picks->videos.size(), 1U);

            const auto chosen = stage.view->recommendations()->videoList()[2];
            stage.activate(2);
            stage.view->setRecommendations(recommendationOf(videosJson(5))); // Not what it shows when it reports.
            QVERIFY(stage.waitForPicks(2));
            QCOMPARE(stage.picks->videos[1], chosen);
        }
    }

    void pressThatHaltsAFlick()
    {
        Stage stage;
        QVERIFY(stage.fill(300)); // More than are asked for at once; cells are reused.
        QVERIFY(cellCount(stage.items(), stage.items()) <=
                3 * 2 * 4); // Screenfuls, columns, and lines of 154 in a screen of 480.
        stage.stopAndPick();
    }

    /// In the list's order, also after cells have been reused. The focus is heard on the bus, in another test.
    void screenReader()
    {
        const QStringList categories{u"FORYOU"_s, u"MOSTVIEWED"_s, u"MOSTRECENT"_s, u"Cats"_s, QString()};
        const QStringList names{u", For you"_s, u", Most viewed"_s, u", Most recent"_s, u", Cats"_s, QString()};
        Stage stage;
        QVERIFY(stage.show(stage.videos(8, categories), 40));
        QCOMPARE(spoken(stage.items()), u"List: Recommended videos"_s);
        const auto *list = QAccessible::queryAccessibleInterface(stage.items());
        for (qint64 row = 0; row < 30; row += 4)
            stage.items()->scrollToRow(row);
        QStringList heard, expected;
        for (int i = 0; i < list->childCount(); ++i) {
            if (const auto *child = list->child(i); !child->state().invisible)
                heard.append(spoken(child->object()));
        }
        for (const auto *cell : stage.items()->shownCells())
            expected.append(u"ListItem: Video %1, %2%3, %4 of 40"_s.arg(cell->row())
                                .arg(textOf(cell, u"durationLabel"_s), names[cell->row() % 5])
                                .arg(cell->row() + 1));
        QCOMPARE(heard, expected);
    }

    void scrollBar()
    {
        Stage stage;
        QVERIFY(stage.fill(100));
        drag(stage.window, Pointer::Mouse, {314, 8}, {0, 470}); // From the top to the bottom.
        QVERIFY(waitUntil([&] { return stage.cell(99) && stage.place(99).y() < 480; }));
        QVERIFY(flushMainQueue() && stage.picks->videos.empty());
    }

    void mirroredList()
    {
        for (const bool byApplication : {true, false}) {
            QGuiApplication::setLayoutDirection(byApplication ? Qt::RightToLeft : Qt::LeftToRight);
            QQmlEngine engine;
            const auto host = qmlItem(engine, mirroringItem);
            Stage stage;
            if (!byApplication) {
                host->setParentItem(stage.window.contentItem());
                stage.items()->setParentItem(host.get());
            }
            QVERIFY(stage.fill(3));
            const auto left = [&](qint64 row) { return stage.cell(row)->x(); };
            QVERIFY(waitUntil([&] { return left(0) > left(1); }));
            QCOMPARE(left(2), left(0));
            const auto *badge = outletOf(stage.cell(0), u"valueHolderView"_s);
            QVERIFY2(badge->x() > stage.cell(0)->width() / 2, "the cells are mirrored, too");
            const auto *title = outletOf(stage.cell(0), u"titleLable"_s);
            QCOMPARE(title->property("effectiveHorizontalAlignment").toInt(), int(Qt::AlignRight));

            stage.items()->forceActiveFocus(Qt::TabFocusReason);
            stage.walk(u"Left 1, Right 0"_s);
        }
    }

    void keyboard()
    {
        Stage stage;
        QVERIFY(stage.fill(40));
        stage.window.below.setFocus(false);
        stage.key(Qt::Key_Tab);
        QVERIFY(stage.items()->hasActiveFocus());
        QCOMPARE(stage.marked(), u"0"_s);
        stage.walk(u"Right 1, Down 3, Left 2, Up 0, Up 0, End 39, Down 39, Home 0, PgDown 6, PgUp 0"_s);
        for (const auto key : {Qt::Key_Return, Qt::Key_Space, Qt::Key_Enter})
            stage.key(key);
        QVERIFY(stage.waitForPicks(3));
        stage.window.below.forceActiveFocus();
        QCOMPARE(stage.marked(), QString());
    }

    void keysThatChooseNothing()
    {
        Stage stage;
        QVERIFY(stage.window.appear());
        stage.key(Qt::Key_Tab);
        QVERIFY2(!stage.items()->hasActiveFocus(), "an empty list takes no focus");
        QVERIFY(stage.fill(40));
        auto *const scroller = stage.items()->scroller();
        stage.items()->forceActiveFocus(Qt::TabFocusReason);
        for (const bool isRepeated : {false, true, true}) {
            QKeyEvent key(QEvent::KeyPress, Qt::Key_Return, Qt::NoModifier, QString(), isRepeated);
            QCoreApplication::sendEvent(&stage.window, &key);
        }
        for (const auto key : {Qt::Key_Return, Qt::Key_Right, Qt::Key_End})
            QTest::keyClick(&stage.window, key, Qt::ControlModifier);
        QVERIFY(stage.waitForPicks(1) && flushMainQueue());
        QCOMPARE(stage.picks->videos.size(), 1U);
        QCOMPARE(stage.items()->currentRow(), 0);

        scroller->setProperty("contentY", 1500); // The current video is out of sight.
        QFocusEvent leaves(QEvent::FocusOut, Qt::ActiveWindowFocusReason);
        QFocusEvent returns(QEvent::FocusIn, Qt::ActiveWindowFocusReason);
        QCoreApplication::sendEvent(stage.items(), &leaves);
        QCoreApplication::sendEvent(stage.items(), &returns);
        QCOMPARE(stage.offset(), 1500);
        stage.key(Qt::Key_Space);
        QVERIFY(stage.offset() <= 0 && flushMainQueue());
        QCOMPARE(stage.picks->videos.size(), 1U);
        stage.key(Qt::Key_Space);
        QVERIFY(stage.waitForPicks(2));
    }

    /// As a window is resized or a device turned.
    void firstRowStays()
    {
        Stage stage;
        QVERIFY(stage.fill(100));
        stage.items()->scrollToRow(99);
        stage.items()->scrollToRow(40);
        const auto firstRow = [&] {
            stage.items()->layoutIfNeeded();
            const auto cells = stage.items()->shownCells();
            const auto isInSight = [&](auto *cell) { return stage.place(cell->row()).y() + cell->height() > 0.5; };
            return (*std::ranges::find_if(cells, isInSight))->row();
        };
        QCOMPARE(firstRow(), 40);
        for (const auto &size : {QSizeF(480, 320), QSizeF(320, 480), QSizeF(900, 700), QSizeF(320, 480)}) {
            stage.items()->setSize(size);
            QCOMPARE(firstRow(), 40);
        }
    }

    void hostDeletesTheItem()
    {
        const auto viewFor = &ZVRecommendationViewFactory::recommendationViewForType;
        QVERIFY(std::dynamic_pointer_cast<ZVListView>(viewFor(0)));
        QVERIFY(std::dynamic_pointer_cast<ZVCategoryView>(viewFor(1)));
        QVERIFY(!viewFor(2) && !viewFor(-1));
        for (const auto &view : {viewFor(0), viewFor(1)}) {
            auto host = std::make_unique<QObject>();
            view->view()->setParent(host.get());
            host.reset();
            QVERIFY(!view->view());
            view->setRecommendations(recommendationOf({videoJson(0, {})}));
        }
    }
};

UI_TEST_MAIN(tst_ListView)
#include "tst_ListView.moc"
