#include "workstate/workstatefile.h"

namespace tessera {

QByteArray workStateBytes(const WorkState&)
{
    return {};
}

bool workStateFromBytes(const QByteArray&, WorkState&, QString* pstrReason)
{
    if (pstrReason) {
        *pstrReason = QStringLiteral("It cannot be read yet.");
    }
    return false;
}

}  // namespace tessera
