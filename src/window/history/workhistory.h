// WorkHistory: the steps of a user's work, noted as they are made.
#pragma once

#include "workstate/workstate.h"

#include <QObject>
#include <QString>

namespace tessera {

/// Notes the state of the window whenever it has come to rest after a change.
class WorkHistory : public QObject {
    Q_OBJECT

public:
    using QObject::QObject;

signals:
    /// A step has been made, undone or redone; `state` is what the window holds from now on.
    void stepNoted(const tessera::WorkState& state, const QString& strStep);
};

}  // namespace tessera
