// Judgement: what the result of a part of the road is worth, in one word and one sentence.
#pragma once

#include <QList>
#include <QString>

namespace tessera {

enum class Verdict { Good, Doubtful, Bad };

/// "good", "doubtful" or "bad".
QString verdictName(Verdict verdict);

struct Judgement {
    QString strPart;  ///< of the road, as summaries call it: a stage, "axis", "lattice"
    Verdict verdict = Verdict::Good;
    QString strReason;    ///< a sentence with the figure in it
    double dfFigure = 0;  ///< the figure that the verdict hangs on, in the units of the sentence
};

/// The line of the log: "Judgement of peaks: good. 5366 peaks on 113 frames."
QString judgementLine(const Judgement& judgement);

/// Adds a judgement, or puts it in the place of the one of the same part, as a stage may be run again.
void takeJudgement(QList<Judgement>& listJudgement, const Judgement& judgement);

/// The worst of them; Good where there is none.
Verdict worstVerdict(const QList<Judgement>& listJudgement);

}  // namespace tessera
