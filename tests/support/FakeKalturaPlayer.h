#pragma once

#include <ZelvanoUI/KPViewController.h>

#include <QRectF>
#include <QStringList>

#include <vector>

/// Records all calls.
class FakeKalturaPlayer : public zelvano::KPViewController
{
public:
    QString entryId() const override { return entry; }
    double duration() const override { return length; }
    double currentPlaybackTime() const override { return time; }
    QObject *view() const override { return &m_view; }
    QRectF videoBounds() const override { return {0, 10, 320, 180}; }
    void addKPlayerEventListener(const QString &event, const QString &id, const zelvano::KPHandler &handler) override
    {
        listeners.append(event + u' ' + id);
        handlers.push_back(handler);
    }
    void asyncEvaluate(const QString &expression, const QString &id, const zelvano::KPHandler &handler) override
    {
        asked.append(expression + u' ' + id);
        answer = handler;
    }
    void sendNotification(const QString &name, const QVariant &params) override
    {
        notifications.append(name + u' ' + (params.isValid() ? params.toString() : QStringLiteral("(none)")));
    }
    using KPViewController::tellLoadState;
    using KPViewController::tellPlaybackState;

    QString entry = QStringLiteral("entry-1");
    double length = 60;
    double time = 7;
    QStringList listeners, asked, notifications;
    std::vector<zelvano::KPHandler> handlers;
    zelvano::KPHandler answer;

private:
    mutable QObject m_view;
};
