#include "NativeViews.h"
#include "ZVCategoryView.h"
#include "ZVListView.h"
#include "ZVRecommendationTableViewCell.h"
#include "ZVTopRecommendationView.h"

#include <QAccessible>
#include <QQmlComponent>
#include <QQmlEngine>

using namespace Qt::StringLiterals;
using namespace zelvano;

namespace {

QAccessibleInterface *contentOf(ZVItemViewCell *cell)
{
    return QAccessible::queryAccessibleInterface(cell->childItems().first());
}

QString nameOf(QObject *object)
{
    return QAccessible::queryAccessibleInterface(object)->text(QAccessible::Name);
}

ZVItemView *videosIn(ZVItemViewCell *row)
{
    auto *const videos = static_cast<ZVRecommendationTableViewCell *>(row)->videosCollectionView();
    videos->layoutIfNeeded();
    return videos;
}

void pressByScreenReader(QAccessibleInterface *interface)
{
    interface->actionInterface()->doAction(QAccessibleActionInterface::pressAction());
}

/// An item of a host's that mirrors all that is in it.
std::unique_ptr<QQuickItem> mirroringItem(QQmlEngine &engine)
{
    QQmlComponent component(&engine);
    component.setData("import QtQuick\nItem { LayoutMirroring.enabled: true; LayoutMirroring.childrenInherit: true }",
                      {});
    return std::unique_ptr<QQuickItem>(qobject_cast<QQuickItem *>(component.create()));
}

} // namespace

/// What a screen reader is told, and what a viewer who reads from right to left sees.
class tst_Accessibility : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void cleanup() { QGuiApplication::setLayoutDirection(Qt::LayoutDirectionAuto); }
    void listCells()
    {
        NativeStage<ZVListView> stage;
        QVERIFY(stage.show(stage.videos(1, {u"FORYOU"_s, u"MOSTVIEWED"_s, u"MOSTRECENT"_s, u"Cats"_s, QString()}), 5));
        QCOMPARE(QAccessible::queryAccessibleInterface(stage.items())->role(), QAccessible::List);
        QCOMPARE(nameOf(stage.items()), u"Recommended videos"_s);
        QStringList names;
        for (auto *cell : stage.items()->shownCells())
            names.append(contentOf(cell)->text(QAccessible::Name));
        QCOMPARE(names, (QStringList{u"Video 0, 1:00, For you"_s, u"Video 1, 1:01, Most viewed"_s,
                                     u"Video 2, 1:02, Most recent"_s, u"Video 3, 1:03, Cats"_s, u"Video 4, 1:04"_s}));
        auto *const cell = contentOf(stage.cell(0));
        QCOMPARE(cell->role(), QAccessible::ListItem);
        QVERIFY(cell->state().focusable && !cell->state().focused);
        stage.items()->forceActiveFocus(Qt::TabFocusReason);
        QVERIFY(stage.items()->hasActiveFocus());
        QVERIFY2(cell->state().focused, "the keyboard is on the list's current cell");
    }

    void categoryRows()
    {
        NativeStage<ZVCategoryView> stage;
        QVERIFY(stage.show(stage.videos(2, {u"FORYOU"_s, u"MOSTVIEWED"_s}), 2));
        QCOMPARE(QAccessible::queryAccessibleInterface(stage.items())->role(), QAccessible::List);
        QCOMPARE(nameOf(stage.items()), u"Recommended videos by category"_s);
        auto *const row = contentOf(stage.cell(0));
        QCOMPARE(row->role(), QAccessible::Grouping);
        QCOMPARE(row->text(QAccessible::Name), u"FORYOU"_s);
        auto *const cell = contentOf(videosIn(stage.cell(0))->cellForRow(1));
        QCOMPARE(cell->role(), QAccessible::ListItem);
        QCOMPARE(cell->text(QAccessible::Name), u"Video 2, 1:02, For you"_s);
        pressByScreenReader(cell);
        QVERIFY(stage.waitForPicks(1));
        QCOMPARE(stage.picks->videos.front()->title(), u"Video 2"_s);
    }

    void closeControl()
    {
        HostWindow window;
        QQmlEngine engine;
        const auto host = mirroringItem(engine);
        host->setParentItem(window.contentItem());
        ZVTopRecommendationView overlay(QRectF(0, 0, 480, 270));
        overlay.setParentItem(host.get());
        QVERIFY(window.appear());
        overlay.setHidden(false);
        auto *const content = reinterpret_cast<QQuickItem *>(overlay.contentView());
        QCOMPARE(nameOf(content), u"Recommended videos"_s);
        auto *const item = content->findChild<QQuickItem *>(u"dismiss"_s);
        auto *const control = QAccessible::queryAccessibleInterface(item);
        QCOMPARE(control->role(), QAccessible::Button);
        QCOMPARE(control->text(QAccessible::Name), u"Close recommendations"_s);
        QVERIFY(control->state().focusable && !control->state().invisible && item->activeFocusOnTab());
        QCOMPARE(item->x() + item->width(), 480.0); // Not mirrored.
        pressByScreenReader(control);
        QVERIFY(waitUntil([&] { return overlay.isHidden(); }));
    }

    void mirroredList()
    {
        for (const bool byApplication : {true, false}) {
            QGuiApplication::setLayoutDirection(byApplication ? Qt::RightToLeft : Qt::LeftToRight);
            QQmlEngine engine;
            const auto host = mirroringItem(engine);
            NativeStage<ZVListView> stage;
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

            stage.items()->forceActiveFocus(Qt::TabFocusReason);
            stage.key(Qt::Key_Left);
            QCOMPARE(stage.items()->currentRow(), 1);
            stage.key(Qt::Key_Right);
            QCOMPARE(stage.items()->currentRow(), 0);
            tap(stage.window, Pointer::Mouse, centreOf(stage.cell(1)));
            QVERIFY(stage.waitForPicks(1));
            QCOMPARE(stage.picks->videos.front()->title(), u"Video 1"_s);
        }
    }

    /// A row begins at the right, whatever its length, and is scrolled by the keyboard to the left.
    void mirroredCategories()
    {
        for (const int count : {1, 40}) {
            QGuiApplication::setLayoutDirection(Qt::RightToLeft);
            NativeStage<ZVCategoryView> stage;
            QVERIFY(stage.show(stage.videos(count, {u"FORYOU"_s}), 1));
            auto *const videos = videosIn(stage.cell(0));
            const auto right = [&](qint64 number) {
                const auto *cell = videos->cellForRow(number);
                return cell ? cell->mapRectToItem(stage.items(), QRectF({}, cell->size())).right() : -1;
            };
            constexpr double edge = 320 - 16;
            QVERIFY(waitUntil([&] { return qFuzzyCompare(right(0), edge); }));
            stage.items()->setWidth(400);
            QVERIFY2(waitUntil([&] { return qFuzzyCompare(right(0), edge + 80); }), "after a change of the width, too");

            stage.items()->forceActiveFocus(Qt::TabFocusReason);
            stage.key(Qt::Key_End);
            QCOMPARE(videos->currentRow(), count - 1);
            QVERIFY(videos->cellForRow(count - 1));
            if (count > 1)
                QCOMPARE(right(count - 1), 16 + videos->cellForRow(count - 1)->width());
            stage.key(Qt::Key_Home);
            QCOMPARE(right(0), edge + 80);
        }
    }
};

UI_TEST_MAIN(tst_Accessibility)
#include "tst_Accessibility.moc"
