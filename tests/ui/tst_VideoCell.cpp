#include "NativeViews.h"
#include "ZVVideoCollectionViewCell.h"

#include <QTest>

using namespace Qt::StringLiterals;
using namespace zelvano;

namespace {

std::shared_ptr<ZVVideoParams> video(const QJsonObject &params, bool hasImage = false)
{
    const auto video = std::make_shared<ZVVideoParams>(params);
    if (hasImage) {
        QImage image(32, 18, QImage::Format_RGB32);
        image.fill(Qt::green);
        video->setImage(image);
    }
    return video;
}

using Cell = std::unique_ptr<ZVVideoCollectionViewCell>;

Cell newCell()
{
    return Cell(ZVVideoCollectionViewCell::create());
}

} // namespace

class tst_VideoCell : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void secToTime_data()
    {
        QTest::addColumn<QJsonValue>("seconds");
        QTest::addColumn<QString>("text");
        const auto row = [](const char *name, const QJsonValue &seconds, const QString &text) {
            QTest::newRow(name) << seconds << text;
        };
        row("59", 59, u"0:59"_s);
        row("60", 60, u"1:00"_s);
        row("600", 600, u"10:00"_s);
        row("no hours", 3725, u"62:05"_s);
        row("fraction", 61.9, u"1:01"_s);
        row("negative", -61, u"-1:-1"_s);
        row("absent", QJsonValue(QJsonValue::Undefined), u"0:00"_s);
        row("text", u"61"_s, u"1:01"_s);
        row("words", u"an hour"_s, u"0:00"_s);
        row("object", QJsonObject(), u"0:00"_s);
        row("beyond 32 bits", 1e300, u"35791394:07"_s);
        row("null", QJsonValue::Null, QString());
    }

    void secToTime()
    {
        QFETCH(const QJsonValue, seconds);
        const LogCollector log;
        const auto text = ZVVideoCollectionViewCell::secToTime(seconds);
        QTEST(text, "text");
        QCOMPARE(text.isNull(), seconds.isNull());
        QCOMPARE(log.count(u"Error(secToTime):: duration is <null>"_s), seconds.isNull() ? 1 : 0);
    }

    void colorForCategory_data()
    {
        QTest::addColumn<QString>("category");
        QTest::addColumn<QColor>("color");
        QTest::newRow("for you") << u"FORYOU"_s << QColor::fromRgbF(1, 0, 0, 0.55F);
        QTest::newRow("most viewed") << u"MOSTVIEWED"_s << QColor::fromRgbF(0, 1, 0, 0.55F);
        QTest::newRow("most recent") << u"MOSTRECENT"_s << QColor::fromRgbF(0.5F, 0.5F, 0.5F, 0.55F);
        for (const auto &other : {u"foryou"_s, u"FORYOU "_s, u""_s, QString()})
            QTest::newRow(qPrintable(u"other "_s + other)) << other << QColor(0, 0, 0, 0);
    }

    void colorForCategory()
    {
        QFETCH(const QString, category);
        QTEST(ZVVideoCollectionViewCell::colorForCategory(category), "color");
    }

    void fill()
    {
        const auto cell = newCell();
        const auto params = video({{"title"_L1, u"<b>A title</b>"_s},
                                   {"durationSec"_L1, 61},
                                   {"value"_L1, 93},
                                   {"category"_L1, u"FORYOU"_s}});
        params->setIndex(12);
        cell->setSize({400, 300});
        cell->setParams(params);
        QCOMPARE(text(cell, u"titleLable"_s), u"<b>A title</b>"_s);
        QCOMPARE(cell->titleLable()->property("textFormat").toInt(), int(Qt::PlainText));
        QCOMPARE(cell->titleLable()->property("font").value<QFont>().pixelSize(), 20);
        QCOMPARE(text(cell, u"durationLabel"_s), u"1:01"_s);
        QCOMPARE(text(cell, u"valueLabel"_s), u"12"_s);
        QCOMPARE(cell->valueHolderView()->property("color").value<QColor>(),
                 ZVVideoCollectionViewCell::colorForCategory(u"FORYOU"_s));
        QCOMPARE(cell->valueHolderView()->property("radius").toDouble(), 10.0);
        QVERIFY(!cell->params());
        cell->setWidth(200);
        QCOMPARE(cell->titleLable()->property("font").value<QFont>().pixelSize(), 10);
    }

    void shadowEndsAtTheEdge()
    {
        const auto cell = newCell();
        QVERIFY(cell->clip());
        QVERIFY(cell->width() > 0);
        QCOMPARE(cell->shadowOffset(), cell->size() * double(shadowWidthPercent));
        QCOMPARE(cell->shadowRadius(), cell->width() * double(shadowWidthPercent));
        QCOMPARE(cell->shadowOpacity(), 0.8);
    }

    void fadesInOnce()
    {
        const auto cell = newCell();
        auto *const picture = cell->iconImageView();
        QCOMPARE(picture->opacity(), 0.0);
        cell->setParams(video({}));
        QVERIFY(picture->image().isNull());
        QVERIFY(!picture->findChild<QAbstractAnimation *>());

        cell->setParams(video({}, true));
        const auto *fade = picture->findChild<QAbstractAnimation *>();
        QVERIFY(fade);
        QCOMPARE(fade->duration(), 500);
        QVERIFY(picture->opacity() < 1);
        QVERIFY(waitUntil([&] { return picture->opacity() == 1; }));
        QVERIFY(waitUntil([&] { return !picture->findChild<QAbstractAnimation *>(); }));

        cell->setParams(video({})); // Nothing of the former video is left but the opacity.
        QVERIFY(picture->image().isNull());
        QVERIFY(text(cell, u"titleLable"_s).isEmpty());
        cell->setParams(video({}, true));
        QCOMPARE(picture->opacity(), 1.0);
        QVERIFY(!picture->findChild<QAbstractAnimation *>());
    }

    void missingOutlets()
    {
        const auto cell = newCell();
        delete cell->iconImageView();
        delete cell->valueHolderView();
        cell->setParams(video({{"title"_L1, u"x"_s}}, true));
        cell->setParams(nullptr);
        cell->setSize({10, 10});
        QVERIFY(!cell->iconImageView() && !cell->valueLabel());
    }

    /// The middle of the picture shows in the cell's shape, and in the pixels of the screen.
    void drawing()
    {
        HostWindow window({100, 100});
        QVERIFY(window.appear());
        QImage image(300, 100, QImage::Format_RGB32);
        image.fill(Qt::red);
        for (int x = 100; x < 200; ++x) {
            for (int y = 0; y < 100; ++y)
                image.setPixelColor(x, y, Qt::blue);
        }
        ZVImageView view;
        view.setParentItem(window.contentItem());
        view.setSize({100, 100});
        view.setProperty("radius", 20);
        view.setImage(image);
        const auto shot = window.grabWindow();
        for (const auto &at : {QPoint(50, 50), QPoint(2, 50), QPoint(97, 50), QPoint(50, 2)})
            QCOMPARE(shot.pixelColor(at), QColor(Qt::blue));
        QCOMPARE(shot.pixelColor(1, 1), window.color()); // Round corners.
        view.setImage({});
        QCOMPARE(window.grabWindow().pixelColor(50, 50), window.color());
    }

private:
    static QString text(const Cell &cell, const QString &outlet) { return textOf(cell.get(), outlet); }
};

int main(int argc, char **argv)
{
    return runUiTest<tst_VideoCell>(argc, argv);
}
#include "tst_VideoCell.moc"
