#include "NativeViews.h"
#include "ZVRecommendationTableViewCell.h"
#include "ZVRecommendationViewFactory.h"
#include "ZVTopRecommendationView.h"

#include <QAccessible>
#include <QQmlComponent>
#include <QQmlEngine>

using namespace Qt::StringLiterals;
using namespace zelvano;

namespace {

QJsonArray videosOf(NativeStage &stage, const QStringList &categories)
{
    const auto url = stage.picture(u"common"_s, gifFile());
    QJsonArray videos;
    for (qsizetype i = 0; i < categories.size(); ++i)
        videos.append(videoJson(static_cast<int>(i), url, categories[i]));
    return videos;
}

QAccessibleInterface *contentOf(ZVItemViewCell *cell)
{
    return QAccessible::queryAccessibleInterface(cell->childItems().first());
}

/// An item of a host's that mirrors all that is in it.
std::unique_ptr<QQuickItem> mirroringItem(QQmlEngine &engine)
{
    QQmlComponent component(&engine);
    component.setData("import QtQuick\nItem { LayoutMirroring.enabled: true; LayoutMirroring.childrenInherit: true }",
                      {});
    return std::unique_ptr<QQuickItem>(qobject_cast<QQuickItem *>(component.create()));
}

/// The direction of the application, for the length of a test.
class Direction
{
public:
    explicit Direction(Qt::LayoutDirection direction) { QGuiApplication::setLayoutDirection(direction); }
    ~Direction() { QGuiApplication::setLayoutDirection(Qt::LayoutDirectionAuto); }
    Q_DISABLE_COPY_MOVE(Direction)
};

} // namespace

/// What a screen reader is told, and what a viewer who reads from right to left sees.
class tst_Accessibility : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void listCells_data();
    void listCells();
    void categoryRows();
    void closeControl();
    void mirroredList_data();
    void mirroredList();
    void mirroredCategories_data();
    void mirroredCategories();
    void overlayIsNotMirrored();
};

void tst_Accessibility::listCells_data()
{
    QTest::addColumn<QString>("category");
    QTest::addColumn<QString>("name");
    QTest::newRow("for you") << u"FORYOU"_s << u"Video 0, 1:00, For you"_s;
    QTest::newRow("most viewed") << u"MOSTVIEWED"_s << u"Video 0, 1:00, Most viewed"_s;
    QTest::newRow("most recent") << u"MOSTRECENT"_s << u"Video 0, 1:00, Most recent"_s;
    QTest::newRow("of the service's own") << u"Cats"_s << u"Video 0, 1:00, Cats"_s;
    QTest::newRow("none") << QString() << u"Video 0, 1:00"_s;
}

void tst_Accessibility::listCells()
{
    QFETCH(QString, category);
    QFETCH(QString, name);
    NativeStage stage(ZVRecommendationViewFactory::recommendationViewForType(0));
    stage.view->setRecommendations(recommendationOf(videosOf(stage, {category})));
    QVERIFY(stage.window.appear() && stage.waitForItems(1));
    auto *const list = QAccessible::queryAccessibleInterface(stage.items());
    QCOMPARE(list->role(), QAccessible::List);
    QCOMPARE(list->text(QAccessible::Name), u"Recommended videos"_s);
    auto *const cell = contentOf(stage.items()->cellForRow(0));
    QCOMPARE(cell->role(), QAccessible::ListItem);
    QCOMPARE(cell->text(QAccessible::Name), name);
    QVERIFY(cell->state().focusable && !cell->state().focused);
    stage.items()->forceActiveFocus(Qt::TabFocusReason);
    QVERIFY(stage.items()->hasActiveFocus());
    QVERIFY2(cell->state().focused, "the keyboard is on the list's current cell");
}

void tst_Accessibility::categoryRows()
{
    NativeStage stage(ZVRecommendationViewFactory::recommendationViewForType(1));
    stage.view->setRecommendations(recommendationOf(videosOf(stage, {u"FORYOU"_s, u"MOSTVIEWED"_s, u"FORYOU"_s})));
    QVERIFY(stage.window.appear() && stage.waitForItems(2));
    QCOMPARE(QAccessible::queryAccessibleInterface(stage.items())->text(QAccessible::Name),
             u"Recommended videos by category"_s);
    auto *const row = contentOf(stage.items()->cellForRow(0));
    QCOMPARE(row->role(), QAccessible::Grouping);
    QCOMPARE(row->text(QAccessible::Name), u"FORYOU"_s);
    auto *const videos =
        static_cast<ZVRecommendationTableViewCell *>(stage.items()->cellForRow(0))->videosCollectionView();
    videos->layoutIfNeeded();
    auto *const cell = contentOf(videos->cellForRow(1));
    QCOMPARE(cell->role(), QAccessible::ListItem);
    QCOMPARE(cell->text(QAccessible::Name), u"Video 2, 1:02, For you"_s);
    cell->actionInterface()->doAction(QAccessibleActionInterface::pressAction());
    QVERIFY(waitUntil([&] { return stage.picks->videos.size() == 1; }));
    QCOMPARE(stage.picks->videos.front()->title(), u"Video 2"_s);
}

void tst_Accessibility::closeControl()
{
    HostWindow window;
    ZVTopRecommendationView overlay(QRectF(0, 0, 480, 270));
    overlay.setParentItem(window.contentItem());
    QVERIFY(window.appear());
    overlay.setHidden(false);
    auto *const content = reinterpret_cast<QQuickItem *>(overlay.contentView());
    QCOMPARE(QAccessible::queryAccessibleInterface(content)->text(QAccessible::Name), u"Recommended videos"_s);
    auto *const item = content->findChild<QQuickItem *>(u"dismiss"_s);
    auto *const control = QAccessible::queryAccessibleInterface(item);
    QCOMPARE(control->role(), QAccessible::Button);
    QCOMPARE(control->text(QAccessible::Name), u"Close recommendations"_s);
    QVERIFY(control->state().focusable && !control->state().invisible);
    QVERIFY(item->activeFocusOnTab());
    control->actionInterface()->doAction(QAccessibleActionInterface::pressAction());
    QVERIFY(waitUntil([&] { return overlay.isHidden(); }));
}

void tst_Accessibility::mirroredList_data()
{
    QTest::addColumn<bool>("byApplication");
    QTest::newRow("application") << true;
    QTest::newRow("host's items") << false;
}

void tst_Accessibility::mirroredList()
{
    QFETCH(bool, byApplication);
    const Direction direction(byApplication ? Qt::RightToLeft : Qt::LeftToRight);
    NativeStage stage(ZVRecommendationViewFactory::recommendationViewForType(0));
    QQmlEngine engine;
    const auto host = byApplication ? nullptr : mirroringItem(engine);
    if (host) {
        host->setParentItem(stage.window.contentItem());
        stage.items()->setParentItem(host.get());
    }
    stage.view->setRecommendations(recommendationOf(videosOf(stage, {u"FORYOU"_s, u"FORYOU"_s, u"FORYOU"_s})));
    QVERIFY(stage.window.appear() && stage.waitForItems(3));
    const auto left = [&](qint64 row) { return stage.items()->cellForRow(row)->x(); };
    QVERIFY(waitUntil([&] { return left(0) > left(1); }));
    QCOMPARE(left(2), left(0));
    const auto *badge = outletOf(stage.items()->cellForRow(0), u"valueHolderView"_s);
    QVERIFY2(badge->x() > stage.items()->cellForRow(0)->width() / 2, "the cells are mirrored, too");

    stage.items()->forceActiveFocus(Qt::TabFocusReason);
    QTest::keyClick(&stage.window, Qt::Key_Left);
    QCOMPARE(stage.items()->currentRow(), 1);
    QTest::keyClick(&stage.window, Qt::Key_Right);
    QCOMPARE(stage.items()->currentRow(), 0);
    tap(stage.window, Pointer::Mouse, centreOf(stage.items()->cellForRow(1)));
    QVERIFY(waitUntil([&] { return stage.picks->videos.size() == 1; }));
    QCOMPARE(stage.picks->videos.front()->title(), u"Video 1"_s);
    stage.view.reset(); // Its item is in the host's.
}

void tst_Accessibility::mirroredCategories_data()
{
    QTest::addColumn<int>("count");
    QTest::newRow("few") << 1;
    QTest::newRow("many") << 40;
}

/// A row begins at the right, whatever its length, and is scrolled by the keyboard to the left.
void tst_Accessibility::mirroredCategories()
{
    QFETCH(int, count);
    const Direction direction(Qt::RightToLeft);
    NativeStage stage(ZVRecommendationViewFactory::recommendationViewForType(1));
    stage.view->setRecommendations(recommendationOf(videosOf(stage, QStringList(count, u"FORYOU"_s))));
    QVERIFY(stage.window.appear() && stage.waitForItems(1));
    auto *const row = static_cast<ZVRecommendationTableViewCell *>(stage.items()->cellForRow(0));
    auto *const videos = row->videosCollectionView();
    const auto right = [&](qint64 number) {
        const auto *cell = videos->cellForRow(number);
        return cell ? cell->mapRectToItem(stage.items(), QRectF({}, cell->size())).right() : -1;
    };
    constexpr double edge = 320 - 16;
    QVERIFY(waitUntil([&] { return qFuzzyCompare(right(0), edge); }));
    stage.items()->setWidth(400);
    QVERIFY2(waitUntil([&] { return qFuzzyCompare(right(0), edge + 80); }), "after a change of the width, too");

    stage.items()->forceActiveFocus(Qt::TabFocusReason);
    QTest::keyClick(&stage.window, Qt::Key_End);
    QCOMPARE(videos->currentRow(), count - 1);
    QVERIFY(videos->cellForRow(count - 1));
    if (count > 1)
        QCOMPARE(right(count - 1), 16 + videos->cellForRow(count - 1)->width());
    QTest::keyClick(&stage.window, Qt::Key_Home);
    QCOMPARE(right(0), edge + 80);
}

void tst_Accessibility::overlayIsNotMirrored()
{
    const Direction direction(Qt::RightToLeft);
    HostWindow window;
    QQmlEngine engine;
    const auto host = mirroringItem(engine);
    host->setParentItem(window.contentItem());
    ZVTopRecommendationView overlay(QRectF(0, 0, 480, 270));
    overlay.setParentItem(host.get());
    auto *const control = reinterpret_cast<QQuickItem *>(overlay.contentView())->findChild<QQuickItem *>(u"dismiss"_s);
    QCOMPARE(control->x() + control->width(), 480.0);
}

int main(int argc, char **argv)
{
    return runUiTest<tst_Accessibility>(argc, argv);
}

#include "tst_Accessibility.moc"
