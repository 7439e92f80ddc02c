#include "window/reciprocal/peakfilterbar.h"

#include "window/pages/controltips.h"
#include "window/pages/palettecolors.h"

#include <QLabel>
#include <QLineEdit>
#include <QPalette>
#include <QPushButton>
#include <QVBoxLayout>

namespace tessera {

namespace {

const int g_nPause = 300;  // ms after the last key: a pause between words, not between letters

}  // namespace

PeakFilterBar::PeakFilterBar(QWidget* pParent) : QWidget(pParent)
{
    auto* pLabel = new QLabel(tr("Show"), this);
    m_pLine = new QLineEdit(this);
    m_pLine->setObjectName(QStringLiteral("peakFilter"));
    m_pLine->setAccessibleName(tr("Filter of the peak table"));
    m_pLine->setPlaceholderText(tr("all, or such as: h=0, I>1000, d<1.2, h+k=2n, frame=12..30, unindexed"));
    m_pLine->setClearButtonEnabled(true);
    explain(
        m_pLine,
        tr("Conditions, separated by commas, all of which the rows must fulfil. Columns by their titles, "
           "with = != < <= > >= and a number with a decimal point: I>1000, d<1.2. Ranges: frame=12..30. "
           "Odd and even: h+k=2n, l=2n+1. Also indexed, unindexed, hkl=2 0 -4, flags, flags=slow. "
           "= compares the digits that the table shows. Ctrl+F goes to this line, Escape shows all rows."));
    m_pCounts = new QLabel(this);
    m_pCounts->setObjectName(QStringLiteral("peakFilterCounts"));
    m_pCounts->setToolTip(tr("Rows shown, of all rows."));
    m_pExportButton = new QPushButton(tr("Export CSV..."), this);
    m_pExportButton->setAutoDefault(false);
    explain(m_pExportButton,
            tr("Saves the rows and columns that are seen, in their order, with all digits of "
               "the numbers."));
    m_pError = new QLabel(this);
    m_pError->setObjectName(QStringLiteral("peakFilterError"));
    m_pError->setTextFormat(Qt::PlainText);
    m_pError->setWordWrap(true);
    m_pError->hide();

    auto* pRow = new QHBoxLayout;
    pRow->addWidget(pLabel);
    pRow->addWidget(m_pLine, 1);
    pRow->addWidget(m_pCounts);
    pRow->addWidget(m_pExportButton);
    auto* pLayout = new QVBoxLayout(this);
    pLayout->setContentsMargins(4, 3, 4, 3);
    pLayout->setSpacing(2);
    pLayout->addLayout(pRow);
    pLayout->addWidget(m_pError);

    m_timer.setSingleShot(true);
    m_timer.setInterval(g_nPause);
    connect(&m_timer, &QTimer::timeout, this, [this] { emit entered(m_pLine->text()); });
    // The button that clears the line is an edit, too.
    connect(m_pLine, &QLineEdit::textEdited, this, [this] { m_timer.start(); });
    connect(m_pLine, &QLineEdit::textChanged, this, [this](const QString& strLine) {
        if (strLine.isEmpty()) {
            m_timer.start();
        }
    });
    connect(m_pLine, &QLineEdit::returnPressed, this, [this] {
        m_timer.stop();
        emit entered(m_pLine->text());
    });
}

QString PeakFilterBar::text() const
{
    return m_pLine->text();
}

void PeakFilterBar::setText(const QString& strLine)
{
    if (m_pLine->text() != strLine) {
        m_pLine->setText(strLine);
    }
    m_timer.stop();
}

void PeakFilterBar::setError(const QString& strReason)
{
    QPalette colors = palette();
    colors.setColor(QPalette::WindowText, readableOn(colors, QColor(176, 0, 0)));
    m_pError->setPalette(colors);
    m_pError->setText(strReason);
    m_pError->setVisible(!strReason.isEmpty());
    emit heightChanged();
}

void PeakFilterBar::setCounts(int nShown, int nAll)
{
    m_pCounts->setText(tr("%1 of %2").arg(nShown).arg(nAll));
}

void PeakFilterBar::takeKeyboard()
{
    m_pLine->setFocus(Qt::ShortcutFocusReason);
    m_pLine->selectAll();
}

int PeakFilterBar::heightFor(int nWidth) const
{
    return layout()->hasHeightForWidth() ? layout()->totalHeightForWidth(nWidth)
                                         : layout()->totalSizeHint().height();
}

}  // namespace tessera
