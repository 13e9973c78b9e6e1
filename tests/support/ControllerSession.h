#pragma once

#include "EngineFixture.h"
#include "NativeViews.h"
#include "WebPage.h"
#include <ZelvanoUI/Application.h>
#include <ZelvanoUI/ZelvanoViewController.h>

/// Records the calls of a controller.
class ControllerHost : public zelvano::ZelvanoViewControllerDelegate
{
public:
    void didSelectVideo(zelvano::ZelvanoViewController *, const std::shared_ptr<zelvano::ZVVideoParams> &video) override
    {
        selected.append(video->videoId());
        onSelect();
    }
    void didSelectDone(zelvano::ZelvanoViewController *) override
    {
        ++done;
        onDone();
    }

    QStringList selected;
    int done = 0;
    std::function<void()> onSelect = [] {};
    std::function<void()> onDone = [] {};
};

/// A controller with a running engine, a host and a window.
struct ControllerSession
{
    EngineFixture service;
    std::unique_ptr<HostWindow> window = std::make_unique<HostWindow>();
    QQuickItem playerView;
    const std::shared_ptr<ControllerHost> host = std::make_shared<ControllerHost>();
    const std::shared_ptr<FakeSubscriber> subscriber = std::make_shared<FakeSubscriber>();
    std::shared_ptr<zelvano::ZelvanoViewController> controller;

    ControllerSession()
    {
        playerView.setParentItem(window->contentItem());
        playerView.setSize({400, 300});
        window->show();
        zelvano::Application::shared().setKeyWindow(window.get());
        service.storeIdentity();
        begin();
    }
    void begin()
    {
        controller = zelvano::ZelvanoViewController::create(QStringLiteral("key"));
        controller->setDelegate(host);
        controller->setSuggestionsSize(7);
        engine()->playerEventsHandler()->setCurrentSubscriber(subscriber);
    }
    std::shared_ptr<zelvano::Zelvano> engine() const { return controller->zelvano(); }
    zelvano::ZVTopRecommendationView *overlay() const { return controller->webView(); }
    /// For the plug-ins only: the engine lacks this operation.
    void addPlayer(const std::shared_ptr<QObject> &player) const
    {
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression(QStringLiteral("No such method .*Zelvano::addPlayer")));
        controller->addPlayer(player);
    }

    // Calls of the engine, which holds its listener meanwhile.
    void recommend(int videos, const std::shared_ptr<QObject> &player = nullptr) const
    {
        controller->shared_from_this()->suggestionsDidFetched(nullptr, player, recommendationOf(videosJson(videos)));
    }
    void show(QSizeF videoSize = {320, 180})
    {
        controller->shared_from_this()->addRecommendationToView(nullptr, nullptr, &playerView, videoSize);
    }
    void playerIs(const QString &state) const
    {
        controller->shared_from_this()->stateDidChanged(nullptr, nullptr, state);
    }
    /// The page's first command after it has loaded.
    void beReady() const { overlay()->shouldStartLoadWithRequest(QUrl(QStringLiteral("zelvano://ready"))); }
    void pick(int position) const
    {
        overlay()->shouldStartLoadWithRequest(QUrl(QStringLiteral("zelvano://index?%1").arg(position)));
    }
};
