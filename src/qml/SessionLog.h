#pragma once

#include "EventFilter.h"
#include "Recommendations.h"
#include <ZelvanoUI/EventLog.h>

#include <QPointer>
#include <QtQml/qqml.h>

namespace zelvano {

/// A log of the library's requests, responses and calls during the sessions of one Recommendations. The roles of its
/// rows are time, kind, title, detail and text.
class SessionLog : public zelvano::EventLog
{
    Q_OBJECT
    QML_NAMED_ELEMENT(EventLog)

public:
    explicit SessionLog(QObject *parent = nullptr);

    /// The source of listener calls. Service calls and notifications are logged without one.
    Q_PROPERTY(zelvano::Recommendations *recommendations READ recommendations WRITE setRecommendations NOTIFY
                   recommendationsChanged FINAL)
    Recommendations *recommendations() const { return m_recommendations; }
    void setRecommendations(Recommendations *recommendations);
    Q_SIGNAL void recommendationsChanged();

private:
    void watchSession();

    QPointer<Recommendations> m_recommendations;
};

/// Makes Core's EventFilter an element of the module.
struct EventFilterElement
{
    Q_GADGET
    QML_FOREIGN(zelvano::EventFilter)
    QML_NAMED_ELEMENT(EventFilter)
};

} // namespace zelvano
