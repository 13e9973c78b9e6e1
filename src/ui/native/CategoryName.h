#pragma once

#include <QCoreApplication>
#include <QString>

namespace zelvano {

/// A category for users, in their language; the service's own text for a code that is not known.
inline QString nameOfCategory(const QString &code)
{
    using namespace Qt::StringLiterals;
    const auto translated = [](const char *name) { return QCoreApplication::translate("ZelvanoUI", name); };
    if (code == "FORYOU"_L1)
        return translated(QT_TRANSLATE_NOOP("ZelvanoUI", "For you"));
    if (code == "MOSTVIEWED"_L1)
        return translated(QT_TRANSLATE_NOOP("ZelvanoUI", "Most viewed"));
    if (code == "MOSTRECENT"_L1)
        return translated(QT_TRANSLATE_NOOP("ZelvanoUI", "Most recent"));
    return code;
}

} // namespace zelvano
