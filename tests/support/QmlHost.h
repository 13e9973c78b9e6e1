#pragma once

#include "EngineFixture.h"
#include "NativeViews.h"
#include <ZelvanoUI/ZVTopRecommendationView.h>

#include <QQmlExpression>

#ifdef ZELVANO_STATIC_QML
#include <QQmlExtensionPlugin>
Q_IMPORT_QML_PLUGIN(ZelvanoUIPlugin)
#endif

/// A QML host with a service on loopback, on the test clock.
struct QmlHost
{
    EngineFixture service;
    QQmlEngine qml;
    std::unique_ptr<QObject> root;

    explicit QmlHost(const QString &elements, const QString &imports = {})
    {
        service.storeIdentity();
        qml.addImportPath(QStringLiteral(ZELVANO_QML_DIR));
        QQmlComponent component(&qml);
        component.setData("import QtQuick\nimport QtMultimedia\nimport ZelvanoUI\n" + imports.toUtf8() +
                              "\n"
                              "Window { id: window; visible: true; width: 640; height: 480\n"
                              "required property url first; required property url second\n"
                              "property QtObject service: RecommendationService\n"
                              "property var heard: []; function hear(what) { heard.push(what) }\n" +
                              elements.toUtf8() + "}",
                          {});
        if (!component.isReady())
            qFatal("%s", qPrintable(component.errorString()));
        root.reset(component.createWithInitialProperties(
            {{QStringLiteral("first"), service.sandbox.url(QStringLiteral("/media/1.mp4"))},
             {QStringLiteral("second"), service.sandbox.url(QStringLiteral("/media/2.mp4"))}}));
    }
    ~QmlHost()
    {
        root.reset();
        service.settle();
    }
    Q_DISABLE_COPY_MOVE(QmlHost)

    QVariant run(const QString &script)
    {
        QQmlExpression expression(qmlContext(root.get()), root.get(), script);
        const auto value = expression.evaluate();
        if (expression.hasError())
            qWarning("%s", qPrintable(expression.error().toString()));
        return value;
    }
    template<class Predicate> bool wait(Predicate predicate)
    {
        return waitUntil([&] {
            zelvano::MainQueueTestClock::advance(std::chrono::milliseconds(0));
            return predicate();
        });
    }
    bool waitFor(const QString &condition)
    {
        return wait([&] { return run(condition).toBool(); });
    }
    /// Plays and pauses until the overlay is visible: its page takes its time to load.
    template<class Pause> bool waitForOverlay(Pause playAndPause)
    {
        return wait([&] {
            playAndPause();
            service.advance(std::chrono::milliseconds(500));
            return run(QStringLiteral("recs.overlayVisible")).toBool();
        });
    }
    void setPlayer(QObject *player)
    {
        object(QStringLiteral("recs"))->setProperty("player", QVariant::fromValue(player));
    }
    QStringList heard() { return run(QStringLiteral("heard")).toStringList(); }
    QObject *object(const QString &name) { return run(name).value<QObject *>(); }
    QQuickWindow *window() const { return qobject_cast<QQuickWindow *>(root.get()); }
    /// The native view inside an element.
    zelvano::ZVItemView *viewIn(const QString &name)
    {
        const auto *item = qobject_cast<QQuickItem *>(object(name));
        const auto views = item ? item->childItems() : QList<QQuickItem *>();
        return views.size() == 1 ? qobject_cast<zelvano::ZVItemView *>(views.first()) : nullptr;
    }
    bool waitForItems(const QString &name, qint64 count)
    {
        return wait([&] {
            if (auto *view = viewIn(name))
                view->layoutIfNeeded();
            return viewIn(name) && viewIn(name)->itemCount() == count;
        });
    }
    zelvano::ZVTopRecommendationView *overlay(const QQuickWindow *in = nullptr) const
    {
        for (auto *item : (in ? in : window())->contentItem()->childItems()) {
            if (auto *found = qobject_cast<zelvano::ZVTopRecommendationView *>(item))
                return found;
        }
        return nullptr;
    }
    QString keyOf(const QString &call) const
    {
        auto headers = service.arrived(call).headers;
        return QString::fromUtf8(headers["x-api-key"]);
    }
    /// The number of sessions so far. Each opens the channel once.
    qsizetype sessions()
    {
        QCoreApplication::processEvents();
        service.settle();
        return service.sentCount(zelvano::ZVRetrieveInit);
    }
};
