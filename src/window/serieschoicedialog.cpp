#include "window/serieschoicedialog.h"

#include "window/pages/controltips.h"
#include "window/serieschoicebox.h"

#include <QDialogButtonBox>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

namespace tessera {

SeriesChoiceDialog::SeriesChoiceDialog(int nFrames, const SeriesChoice& before, QWidget* pParent)
    : QDialog(pParent), m_nFrames(nFrames), m_before(before)
{
    setWindowTitle(tr("Frames of the Series"));
    auto* pText = new QLabel(
        tr("Selection of the %L1 frames. Files are not changed: frames are summed and binned as they are "
           "read. The project is opened anew; shifts and peaks that were found before are not used with "
           "another choice, and come back with the former one.")
            .arg(nFrames),
        this);
    pText->setWordWrap(true);
    m_pChoice = new SeriesChoiceBox(this);
    m_pChoice->setChoice(before);
    m_pOutcomeLabel = new QLabel(this);
    m_pOutcomeLabel->setWordWrap(true);
    m_pOutcomeLabel->setTextFormat(Qt::PlainText);
    m_pButtons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
    m_pButtons->button(QDialogButtonBox::Ok)->setText(tr("Open Anew"));
    explain(m_pButtons->button(QDialogButtonBox::Ok),
            tr("Keeps the choice beside the project, and opens the project with it."));
    explain(m_pButtons->button(QDialogButtonBox::Cancel), tr("Closes the dialog; nothing changes."));
    auto* pLayout = new QVBoxLayout(this);
    pLayout->addWidget(pText);
    pLayout->addWidget(m_pChoice);
    pLayout->addWidget(m_pOutcomeLabel);
    pLayout->addStretch(1);
    pLayout->addWidget(m_pButtons);
    resize(480, sizeHint().height());
    connect(m_pChoice, &SeriesChoiceBox::changed, this, &SeriesChoiceDialog::refresh);
    connect(m_pButtons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(m_pButtons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    refresh();
}

SeriesChoice SeriesChoiceDialog::choice() const
{
    return m_pChoice->choice(m_nFrames).value_or(m_before);
}

void SeriesChoiceDialog::refresh()
{
    QString strReason;
    const std::optional<SeriesChoice> chosen = m_pChoice->choice(m_nFrames, &strReason);
    const QString strOutcome = m_pChoice->outcomeText(m_nFrames);
    m_pOutcomeLabel->setText(!chosen                ? strReason
                             : strOutcome.isEmpty() ? tr("All %L1 frames as they come.").arg(m_nFrames)
                                                    : strOutcome + QLatin1Char('.'));
    m_pButtons->button(QDialogButtonBox::Ok)->setEnabled(chosen && *chosen != m_before);
}

}  // namespace tessera
