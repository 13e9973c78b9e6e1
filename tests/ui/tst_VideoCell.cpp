#include "NativeViews.h"
#include "ZVVideoCollectionViewCell.h"

#include <QPainter>

using namespace Qt::StringLiterals;
using namespace zelvano;

namespace {

std::shared_ptr<ZVVideoParams> video(const QJsonObject &params, bool hasImage = false)
{
    const auto video = std::make_shared<ZVVideoParams>(params);
    if (hasImage)
        video->setImage(QImage(32, 18, QImage::Format_RGB32));
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
    void secToTime()
    {
        const std::vector<std::pair<QJsonValue, QString>> cases{
            {59, u"0:59"_s},           {60, u"1:00"_s},           {3725, u"62:05"_s},
            {61.9, u"1:01"_s},         {-61, u"-1:-1"_s},         {QJsonValue(QJsonValue::Undefined), u"0:00"_s},
            {u"61"_s, u"1:01"_s},      {u"an hour"_s, u"0:00"_s}, {QJsonObject(), u"0:00"_s},
            {1e300, u"35791394:07"_s},
        };
        const LogCollector log;
        for (const auto &[seconds, text] : cases)
            QCOMPARE(ZVVideoCollectionViewCell::secToTime(seconds), text);
        QCOMPARE(log.lines(), QStringList());
        QVERIFY(ZVVideoCollectionViewCell::secToTime(QJsonValue::Null).isNull());
        QCOMPARE(log.lines(), QStringList{u"Error(secToTime):: duration is <null>"_s});
    }

    void colorForCategory()
    {
        const auto color = &ZVVideoCollectionViewCell::colorForCategory;
        QCOMPARE(color(u"FORYOU"_s), QColor::fromRgbF(1, 0, 0, 0.55F));
        QCOMPARE(color(u"MOSTVIEWED"_s), QColor::fromRgbF(0, 1, 0, 0.55F));
        QCOMPARE(color(u"MOSTRECENT"_s), QColor::fromRgbF(0.5F, 0.5F, 0.5F, 0.55F));
        for (const auto &other : {u"foryou"_s, u"FORYOU "_s, u""_s, QString()})
            QCOMPARE(color(other), QColor(0, 0, 0, 0));
    }

    void fill()
    {
        const auto cell = newCell();
        QVERIFY(cell->clip()); // Its shadow ends at the edge.
        QCOMPARE(cell->shadowOffset(), cell->size() * double(shadowWidthPercent));
        QCOMPARE(cell->shadowRadius(), cell->width() * double(shadowWidthPercent));
        const auto params =
            video({{"title"_L1, u"<b>A title</b>"_s}, {"durationSec"_L1, 61}, {"category"_L1, u"FORYOU"_s}});
        params->setIndex(12);
        cell->setSize({400, 300});
        cell->setParams(params);
        QCOMPARE(textOf(cell.get(), u"titleLable"_s), u"<b>A title</b>"_s);
        QCOMPARE(cell->titleLable()->property("textFormat").toInt(), int(Qt::PlainText));
        QCOMPARE(cell->titleLable()->property("font").value<QFont>().pixelSize(), 20);
        QCOMPARE(textOf(cell.get(), u"durationLabel"_s), u"1:01"_s);
        QCOMPARE(textOf(cell.get(), u"valueLabel"_s), u"12"_s);
        QCOMPARE(cell->valueHolderView()->property("color").value<QColor>(),
                 ZVVideoCollectionViewCell::colorForCategory(u"FORYOU"_s));
        QCOMPARE(cell->valueHolderView()->property("radius").toDouble(), 10.0);
        QVERIFY(!cell->params());
        cell->setWidth(200);
        QCOMPARE(cell->titleLable()->property("font").value<QFont>().pixelSize(), 10);
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
        QVERIFY(fade && fade->duration() == 500);
        QVERIFY(picture->opacity() < 1);
        QVERIFY(waitUntil([&] { return picture->opacity() == 1 && !picture->findChild<QAbstractAnimation *>(); }));

        cell->setParams(video({})); // Nothing of the former video is left but the opacity.
        QVERIFY(picture->image().isNull());
        QVERIFY(textOf(cell.get(), u"titleLable"_s).isEmpty());
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
        QPainter(&image).fillRect(100, 0, 100, 100, Qt::blue);
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
};

UI_TEST_MAIN(tst_VideoCell)
#include "tst_VideoCell.moc"
