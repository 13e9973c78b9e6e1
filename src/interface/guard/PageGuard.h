#pragma once

#include <QtGlobal>

class QObject;

/// Refuses the host's compiled-in resources to the pages of a WebEngineProfile.
extern "C" Q_DECL_EXPORT void zelvanoGuardProfile(QObject *profile);
