#include "InterfaceResource.h"
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

/// Counts its paintings, each of which scales.
class Picture : public ZVImageView
{
public:
    void paint(QPainter *painter) override
    {
        ++paintings;
        ZVImageView::paint(painter);
    }

    int paintings = 0;
};

/// A cell alone.
struct Cell
{
    InterfaceResource resource{u"ZVVideoCollectionViewCell"_s, nullptr};
    ZVVideoCollectionViewCell *const item = qobject_cast<ZVVideoCollectionViewCell *>(resource.root());

    ZVVideoCollectionViewCell *operator->() const { return item; }
    QQuickItem *outlet(const QString &name) const { return resource.outlet(name); }
};

} // namespace

/// The cell that the list and the rows of categories show.
class tst_VideoCell : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void secToTime()
    {
        const std::pair<QJsonValue, const char *> cases[] = {
            {59, "0:59"},           {60, "1:00"},
            {3725, "62:05"},        {61.9, "1:01"},
            {-61, "-1:-1"},         {u"61"_s, "1:01"},
            {u"an hour"_s, "0:00"}, {QJsonObject(), "0:00"},
            {1e300, "35791394:07"}, {QJsonValue(QJsonValue::Undefined), "0:00"},
        };
        const LogCollector log;
        for (const auto &[seconds, text] : cases)
            QCOMPARE(ZVVideoCollectionViewCell::secToTime(seconds), QLatin1StringView(text));
        QCOMPARE(log.lines(), QStringList());
        QVERIFY(ZVVideoCollectionViewCell::secToTime(QJsonValue::Null).isNull());
        QCOMPARE(log.lines(), QStringList{u"Error(secToTime):: duration is <null>"_s});
    }

    void cell()
    {
        const Cell cell;
        QVERIFY(cell->clip()); // Its shadow ends at the edge.
        QCOMPARE(cell->shadowOffset(), cell->size() * double(0.03F));
        QCOMPARE(cell->shadowRadius(), cell->width() * double(0.03F));
        QCOMPARE(cell->shadowOpacity(), 0.8);
        const auto params =
            video({{"title"_L1, u"<b>A title</b>"_s}, {"durationSec"_L1, 61}, {"category"_L1, u"FORYOU"_s}});
        params->setIndex(12);
        cell->setParams(params);
        const std::pair<QString, QString> texts[] = {
            {u"titleLable"_s, u"<b>A title</b>"_s}, {u"durationLabel"_s, u"1:01"_s}, {u"valueLabel"_s, u"12"_s}};
        for (const auto &[outlet, text] : texts) {
            QCOMPARE(textOf(cell.item, outlet), text);
            QCOMPARE(cell.outlet(outlet)->property("textFormat").toInt(), int(Qt::PlainText));
        }
        auto *const badge = cell.outlet(u"valueHolderView"_s);
        const auto hasBackground = [&] { return badge->childItems().first()->property("visible").toBool(); };
        QCOMPARE(badge->property("radius"), 10.0);
        QVERIFY(!cell->params());
        const std::pair<QString, QColor> colours[] = {{u"FORYOU"_s, QColor::fromRgbF(1, 0, 0, 0.55F)},
                                                      {u"MOSTVIEWED"_s, QColor::fromRgbF(0, 1, 0, 0.55F)},
                                                      {u"MOSTRECENT"_s, QColor::fromRgbF(0.5F, 0.5F, 0.5F, 0.55F)},
                                                      {u"foryou"_s, QColor(0, 0, 0, 0)}};
        for (const auto &[category, colour] : colours) {
            cell->setParams(video({{"category"_L1, category}}));
            QCOMPARE(badge->property("color").value<QColor>(), colour);
            QCOMPARE(hasBackground(), colour.alpha() == 0);
        }
        const auto fontSize = [&](const QString &outlet) {
            return cell.outlet(outlet)->property("font").value<QFont>().pixelSize();
        };
        for (const int width : {140, 200, 380, 900}) { // Nothing is larger than the title.
            cell->setWidth(width);
            QCOMPARE(fontSize(u"titleLable"_s), width / 20);
            QVERIFY(fontSize(u"durationLabel"_s) <= width / 20 && badge->height() < width / 8.0);
        }
    }

    void fadesInOnce()
    {
        const Cell cell;
        auto *const picture = cell->iconImageView();
        const auto fades = [&] { return picture->findChildren<QAbstractAnimation *>(); };
        cell->setParams(video({}));
        QVERIFY(picture->image().isNull() && picture->opacity() == 0 && fades().isEmpty());

        for (int time = 0; time < 2; ++time)
            cell->setParams(video({}, true));
        QCOMPARE(fades().size(), 1);
        QVERIFY(fades().first()->duration() == 500 && picture->opacity() < 1);
        QVERIFY(waitUntil([&] { return picture->opacity() == 1 && fades().isEmpty(); }));

        cell->setParams(video({})); // Nothing of the former video is left but the opacity.
        QVERIFY(picture->image().isNull() && textOf(cell.item, u"titleLable"_s).isEmpty());
        cell->setParams(video({}, true));
        QVERIFY(picture->opacity() == 1 && fades().isEmpty());
        delete picture; // An interface resource may lack it.
        cell->setParams(video({}, true));
        cell->setParams(nullptr);
        QVERIFY(!cell->iconImageView());
    }

    /// The middle of the picture shows in the cell's shape, and in the pixels of the screen.
    void drawing()
    {
        HostWindow window({100, 100});
        QVERIFY(window.appear());
        QImage image(300, 100, QImage::Format_RGB32);
        image.fill(Qt::red);
        QPainter(&image).fillRect(100, 0, 100, 100, Qt::blue);
        Picture view;
        view.setParentItem(window.contentItem());
        view.setSize({100, 100});
        view.setProperty("radius", 20);
        view.setImage(image);
        const auto shot = window.grabWindow();
        for (const auto &at : {QPoint(50, 50), QPoint(2, 50), QPoint(97, 50), QPoint(50, 2)})
            QCOMPARE(shot.pixelColor(at), QColor(Qt::blue));
        QCOMPARE(shot.pixelColor(1, 1), window.color()); // Round corners.
        view.setImage(image);
        view.setOpacity(0.5);
        view.setX(1);
        QVERIFY(window.grabWindow() != shot);
        QCOMPARE(view.paintings, 1); // Although the window was drawn again.
        const auto scaled = [&] {
            QImage canvas(100, 100, QImage::Format_ARGB32_Premultiplied);
            QPainter painter(&canvas);
            painter.scale(0.4, 0.4);
            view.paint(&painter);
            return painter.brush().textureImage();
        };
        QCOMPARE(scaled().size(), QSize(40, 40));
        QCOMPARE(scaled().cacheKey(), scaled().cacheKey()); // Nor does a painting scale a large picture again.
        view.setImage({});
        QCOMPARE(window.grabWindow().pixelColor(50, 50), window.color());
    }
};

UI_TEST_MAIN(tst_VideoCell)
#include "tst_VideoCell.moc"
