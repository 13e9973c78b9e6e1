#pragma once

#include "UiTest.h"
#include <ZelvanoUI/ZVTopRecommendationView.h>

#include <QJSEngine>
#include <QUrl>

/// A page as a data URL, which needs no server.
inline QUrl pageOf(const QString &html)
{
    return QUrl::fromEncoded("data:text/html;charset=utf-8," + QUrl::toPercentEncoding(html));
}

/// A page that stores the library's data in "got" and then reports that it is ready.
inline QUrl listeningPage(const QString &body = {})
{
    return pageOf(QStringLiteral("<body>%1<script>var got = []; function updateSuggestions(...v) { got.push(...v); }"
                                 "location.href = 'zelvano://ready';</script></body>")
                      .arg(body));
}

/// The value of the expression in a web view's page; invalid if the page does not answer.
inline QVariant evaluateIn(QQuickItem *page, const QString &expression)
{
    auto *const engine = page ? qmlEngine(page) : nullptr;
    if (!engine)
        return {};
    const auto box = engine->evaluate(QStringLiteral("(() => { const box = {done: false}; box.take = value => { "
                                                     "box.value = value; box.done = true; }; return box; })()"));
    QMetaObject::invokeMethod(page, "runJavaScript", Q_ARG(QString, expression),
                              Q_ARG(QJSValue, box.property(QStringLiteral("take"))));
    waitUntil([&] { return box.property(QStringLiteral("done")).toBool(); });
    return box.property(QStringLiteral("value")).toVariant();
}

inline QVariant evaluate(const zelvano::ZVTopRecommendationView &overlay, const QString &expression)
{
    return evaluateIn(overlay.webView(), expression);
}

/// Waits until the expression holds in the overlay's page.
inline bool waitForPage(const zelvano::ZVTopRecommendationView &overlay, const QString &condition)
{
    return waitUntil([&] { return evaluate(overlay, QStringLiteral("!!(%1)").arg(condition)).toBool(); });
}

/// Waits until the page's current state is drawn. Before that, clicks do not hit its elements.
inline bool waitForPicture(const zelvano::ZVTopRecommendationView &overlay)
{
    evaluate(overlay,
             QStringLiteral("window.drawn = 0; (function draw() { ++drawn; requestAnimationFrame(draw); })()"));
    return waitForPage(overlay, QStringLiteral("drawn > 3"));
}
