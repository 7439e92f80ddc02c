#include "road/verdict.h"

#include <algorithm>

namespace tessera {

QString verdictName(Verdict verdict)
{
    switch (verdict) {
        case Verdict::Good:
            return QStringLiteral("good");
        case Verdict::Doubtful:
            return QStringLiteral("doubtful");
        case Verdict::Bad:
            break;
    }
    return QStringLiteral("bad");
}

QString judgementLine(const Judgement& judgement)
{
    return QStringLiteral("Judgement of %1: %2. %3")
        .arg(judgement.strPart, verdictName(judgement.verdict), judgement.strReason);
}

void takeJudgement(QList<Judgement>& listJudgement, const Judgement& judgement)
{
    const auto same = std::find_if(listJudgement.begin(), listJudgement.end(),
                                   [&](const Judgement& j) { return j.strPart == judgement.strPart; });
    if (same == listJudgement.end()) {
        listJudgement.append(judgement);
    } else {
        *same = judgement;
    }
}

Verdict worstVerdict(const QList<Judgement>& listJudgement)
{
    Verdict worst = Verdict::Good;
    for (const Judgement& judgement : listJudgement) {
        worst = std::max(worst, judgement.verdict);
    }
    return worst;
}

}  // namespace tessera
