#include "window/crystals/mergeinput.h"

#include "dataset/framefiles.h"
#include "road/intensities.h"
#include "window/integration/tablepanel.h"
#include "window/pages/controltips.h"
#include "window/pages/palettecolors.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDir>
#include <QDoubleSpinBox>
#include <QFileDialog>
#include <QFileInfo>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QListView>
#include <QPushButton>
#include <QSettings>
#include <QShortcut>
#include <QTreeView>
#include <QVBoxLayout>

#include <algorithm>
#include <set>

namespace tessera {

namespace {

const char* const g_pszLengths = "MergeCrystals/Lengths";
const char* const g_pszAngles = "MergeCrystals/Angles";
const char* const g_pszKnown = "MergeCrystals/KnownCells";

QPushButton* makeButton(const QString& strText, const QString& strTip, QWidget* pParent)
{
    auto* pButton = new QPushButton(strText, pParent);
    pButton->setAutoDefault(false);  // the Return key in an edit line must press no button
    explain(pButton, strTip);
    return pButton;
}

QDoubleSpinBox* makeTolerance(double dfStart, const QString& strSuffix, const QString& strTip,
                              QWidget* pParent)
{
    auto* pSpin = new QDoubleSpinBox(pParent);
    pSpin->setRange(0.1, 15);  // % or degrees; with more most compounds would count as one
    pSpin->setDecimals(1);
    pSpin->setSingleStep(0.5);
    pSpin->setValue(dfStart);
    pSpin->setSuffix(strSuffix);
    explain(pSpin, strTip);
    return pSpin;
}

/// The folder that is proposed for the merged files: "merged" beside a folder of results, not in it, so that
/// nobody takes the merged files for results of that series.
QString proposedFolder(const QString& strFirst)
{
    const QFileInfo info(QDir::cleanPath(QFileInfo(strFirst).absoluteFilePath()));
    return QDir(info.absolutePath()).filePath(QStringLiteral("merged"));
}

}  // namespace

MergeInput::MergeInput(QWidget* pParent) : QWidget(pParent)
{
    auto* pLayout = new QVBoxLayout(this);
    pLayout->setContentsMargins(0, 6, 0, 0);
    pLayout->addWidget(makeFolders(), 1);
    pLayout->addWidget(makeOptions());
    showFolders();
}

QWidget* MergeInput::makeFolders()
{
    auto* pPart = new QWidget(this);
    m_pButtonAdd = makeButton(
        tr("Add Folders..."),
        tr("Chooses folders of results, several at once: those that \"Solve\" or tessera-batch have written "
           "to. A folder that only contains such folders stands for all of them. Folders can be dropped on "
           "the "
           "window, too."),
        pPart);
    m_pButtonSeries = makeButton(tr("Add This Series"), tr("Adds the results of the open project."), pPart);
    m_pButtonRemove = makeButton(
        tr("Remove"),
        tr("Takes the chosen rows off the list; the crystals of one folder go together. No file is touched."),
        pPart);
    m_pButtonClear = makeButton(tr("Remove All"), tr("Empties the list. No file is touched."), pPart);
    m_pLabelState = new QLabel(pPart);
    m_pLabelState->setWordWrap(true);
    m_pTable = new TablePanel(pPart);
    m_pTable->setSelectionMode(QAbstractItemView::ExtendedSelection);
    m_pTableUnread = new TablePanel(pPart);
    m_pTableUnread->setSelectionMode(QAbstractItemView::ExtendedSelection);
    explainArea(m_pTable, tr("Results of the runs for each crystal by itself."));
    explainArea(m_pTableUnread,
                tr("Inputs that give no crystal, with the reason. The merging leaves them out."));
    auto* pRow = new QHBoxLayout;
    for (QPushButton* pButton : {m_pButtonAdd, m_pButtonSeries, m_pButtonRemove, m_pButtonClear}) {
        pRow->addWidget(pButton);
        m_listChoice.push_back(pButton);
    }
    pRow->addWidget(m_pLabelState, 1);
    auto* pLayout = new QVBoxLayout(pPart);
    pLayout->setContentsMargins(0, 0, 0, 0);
    pLayout->addLayout(pRow);
    pLayout->addWidget(m_pTable, 3);
    pLayout->addWidget(m_pTableUnread, 1);
    connect(m_pButtonAdd, &QPushButton::clicked, this, &MergeInput::askForFolders);
    connect(m_pButtonRemove, &QPushButton::clicked, this, &MergeInput::removeChosen);
    for (QWidget* pTable : {m_pTable, m_pTableUnread}) {
        // The key acts through the button, so it does nothing while the button is disabled.
        auto* pKey = new QShortcut(QKeySequence(QKeySequence::Delete), pTable, nullptr, nullptr,
                                   Qt::WidgetShortcut);
        connect(pKey, &QShortcut::activated, m_pButtonRemove, &QPushButton::click);
    }
    connect(m_pButtonClear, &QPushButton::clicked, this, [this] {
        m_listFolder.clear();
        dropProposal();
        showFolders();
    });
    return pPart;
}

QWidget* MergeInput::makeOptions()
{
    auto* pBox = new QGroupBox(tr("Options"), this);
    const CellTolerance tolerance;
    m_pSpinLengths = makeTolerance(
        tolerance.dfLengths, tr(" %"),
        tr("Crystals belong to one compound if no edge of their reduced cells differs by more. Smaller: more "
           "groups, of more similar crystals. Larger: if the camera length of the series is not certain."),
        pBox);
    m_pSpinAngles = makeTolerance(tolerance.dfAngles, tr("°"),
                                  tr("The same for the angles of the reduced cells."), pBox);
    m_pComboClass = new QComboBox(pBox);
    m_pComboClass->addItem(tr("by the intensities"));
    m_pComboClass->addItems(laueClassNames());
    explain(m_pComboClass, tr("The Laue class in which all groups are merged. A group whose lattice does not "
                              "have it keeps the one suggested by its intensities."));
    m_pCheckKeepAll = new QCheckBox(tr("Keep all crystals"), pBox);
    explain(m_pCheckKeepAll, tr("Merges those, too, without which equivalents agree better: for compounds "
                                "whose completeness needs each crystal."));
    m_pEditKnown = new QLineEdit(pBox);
    m_pEditKnown->setPlaceholderText(tr("none"));
    explain(m_pEditKnown, tr("A table with the cells of compounds, one a line: name, a, b, c, α, β, γ, and, "
                             "if known, centring or space group, and formula. Groups are named by it."));
    m_pEditOut = new QLineEdit(pBox);
    explain(
        m_pEditOut,
        tr("The folder of the merged files, whose names begin with its name. It is created if necessary."));
    auto* pBrowseKnown = makeButton(tr("Browse..."), tr("Chooses the file of known cells."), pBox);
    auto* pBrowseOut = makeButton(tr("Browse..."), tr("Chooses the folder for the files."), pBox);
    auto* pGrid = new QGridLayout(pBox);
    const auto add = [&](const QString& strLabel, QWidget* pWidget, int nRow, int nColumn) {
        auto* pLabel = new QLabel(strLabel, pBox);
        pLabel->setBuddy(pWidget);
        pWidget->setAccessibleName(strLabel);
        pGrid->addWidget(pLabel, nRow, nColumn);
        pGrid->addWidget(pWidget, nRow, nColumn + 1);
    };
    add(tr("Edges within"), m_pSpinLengths, 0, 0);
    add(tr("Angles within"), m_pSpinAngles, 1, 0);
    add(tr("Laue class"), m_pComboClass, 0, 2);
    pGrid->addWidget(m_pCheckKeepAll, 1, 2, 1, 2);
    add(tr("Known cells"), m_pEditKnown, 0, 4);
    pGrid->addWidget(pBrowseKnown, 0, 6);
    add(tr("Files to"), m_pEditOut, 1, 4);
    pGrid->addWidget(pBrowseOut, 1, 6);
    pGrid->setColumnStretch(5, 1);
    for (QWidget* pWidget : {static_cast<QWidget*>(m_pSpinLengths), static_cast<QWidget*>(m_pSpinAngles),
                             static_cast<QWidget*>(m_pComboClass), static_cast<QWidget*>(m_pCheckKeepAll),
                             static_cast<QWidget*>(m_pEditKnown), static_cast<QWidget*>(m_pEditOut),
                             static_cast<QWidget*>(pBrowseKnown), static_cast<QWidget*>(pBrowseOut)}) {
        m_listChoice.push_back(pWidget);
    }
    connect(pBrowseKnown, &QPushButton::clicked, this, &MergeInput::askForKnownCells);
    connect(pBrowseOut, &QPushButton::clicked, this, &MergeInput::askForOutFolder);
    connect(m_pEditOut, &QLineEdit::textEdited, this, [this] { m_bOutTyped = true; });
    connect(m_pEditOut, &QLineEdit::textChanged, this, &MergeInput::changed);
    return pBox;
}

QString MergeInput::outFolder() const
{
    const QString strFolder = m_pEditOut->text().trimmed();
    return strFolder.isEmpty() ? QString() : QFileInfo(strFolder).absoluteFilePath();
}

void MergeInput::giveFolders(const QStringList& listFolder)
{
    if (listFolder.isEmpty()) {
        return;
    }
    if (!m_bOutTyped && m_pEditOut->text().isEmpty()) {
        m_pEditOut->setText(QDir::toNativeSeparators(proposedFolder(listFolder.first())));
    }
    emit foldersGiven(listFolder);
}

void MergeInput::takeFolder(const ListedFolder& folder)
{
    const auto it = std::find_if(m_listFolder.begin(), m_listFolder.end(), [&](const ListedFolder& known) {
        return known.strFolder == folder.strFolder;
    });
    if (it != m_listFolder.end()) {
        *it = folder;
        return;
    }
    m_listFolder.insert(std::upper_bound(m_listFolder.begin(), m_listFolder.end(), folder,
                                         [](const ListedFolder& first, const ListedFolder& second) {
                                             return naturalLess(first.strFolder, second.strFolder);
                                         }),
                        folder);
}

void MergeInput::showFolders()
{
    m_pTable->setTable(listedTable(m_listFolder));
    m_pTableUnread->setTable(unreadTable(unreadOf(m_listFolder)));
    const int nCrystals = m_pTable->rowCount(), nUnread = m_pTableUnread->rowCount();
    m_pTableUnread->setVisible(nUnread > 0);
    const QColor colorBad = readableOn(palette(), Qt::red);
    for (int nRow = 0; nRow < nUnread; ++nRow) {
        m_pTableUnread->item(nRow, 0)->setForeground(colorBad);
    }
    QString strState = tr("Add the folders with the results of at least two crystals, or drop them here.");
    if (nCrystals + nUnread > 0) {
        strState = nCrystals == 1 ? tr("1 crystal.") : tr("%1 crystals.").arg(nCrystals);
        if (nUnread > 0) {
            strState += QLatin1Char(' ') + tr("Not read: %1.").arg(nUnread);
        }
    }
    m_pLabelState->setText(strState);
    emit changed();
}

void MergeInput::removeChosen()
{
    // The rows of both tables are in the order of the folders and of the lists in them, as showFolders()
    // filled them; the tables cannot be sorted otherwise.
    std::set<QString> setGone;
    int nRow = 0, nUnread = 0;
    for (const ListedFolder& folder : m_listFolder) {
        for (size_t n = 0; n < folder.listCrystal.size(); ++n, ++nRow) {
            if (m_pTable->item(nRow, 0)->isSelected()) {
                setGone.insert(folder.strFolder);
            }
        }
        for (size_t n = 0; n < folder.listUnread.size(); ++n, ++nUnread) {
            if (m_pTableUnread->item(nUnread, 0)->isSelected()) {
                setGone.insert(folder.strFolder);
            }
        }
    }
    m_listFolder.erase(
        std::remove_if(m_listFolder.begin(), m_listFolder.end(),
                       [&](const ListedFolder& folder) { return setGone.count(folder.strFolder) > 0; }),
        m_listFolder.end());
    dropProposal();
    showFolders();
}

/// Replaces the proposed folder for the merged files if no folder of the list is beside it or below: the
/// files would go to the place of other crystals.
void MergeInput::dropProposal()
{
    if (m_bOutTyped) {
        return;
    }
    const QString strPlace = QFileInfo(outFolder()).absolutePath();
    const QString strBelow = strPlace.endsWith(QLatin1Char('/')) ? strPlace : strPlace + QLatin1Char('/');
    const bool bBeside = std::any_of(
        m_listFolder.begin(), m_listFolder.end(), [&](const ListedFolder& folder) {
            return QDir::cleanPath(QFileInfo(folder.strFolder).absoluteFilePath()).startsWith(strBelow);
        });
    if (!bBeside) {
        m_pEditOut->setText(m_listFolder.empty()
                                ? QString()
                                : QDir::toNativeSeparators(proposedFolder(m_listFolder.front().strFolder)));
    }
}

CrystalsJobOptions MergeInput::options() const
{
    CrystalsJobOptions options;
    for (const ListedFolder& folder : m_listFolder) {
        options.listFolder.append(folder.strFolder);
    }
    options.strOutFolder = outFolder();
    options.strKnownCellsFile = m_pEditKnown->text().trimmed();
    options.tolerance.dfLengths = m_pSpinLengths->value();
    options.tolerance.dfAngles = m_pSpinAngles->value();
    options.merge.bKeepAll = m_pCheckKeepAll->isChecked();
    // The first entry leaves the Laue class to the intensities.
    options.merge.judgement.strLaueClass = m_pComboClass->currentIndex() > 0 ? m_pComboClass->currentText()
                                                                             : QString();
    return options;
}

void MergeInput::setChoosable(bool bChoosable)
{
    for (QWidget* pWidget : m_listChoice) {
        pWidget->setEnabled(bChoosable);
    }
}

void MergeInput::restore(const QSettings& settings)
{
    m_pSpinLengths->setValue(settings.value(QLatin1String(g_pszLengths), m_pSpinLengths->value()).toDouble());
    m_pSpinAngles->setValue(settings.value(QLatin1String(g_pszAngles), m_pSpinAngles->value()).toDouble());
    m_pEditKnown->setText(settings.value(QLatin1String(g_pszKnown)).toString());
}

void MergeInput::keep(QSettings& settings) const
{
    settings.setValue(QLatin1String(g_pszLengths), m_pSpinLengths->value());
    settings.setValue(QLatin1String(g_pszAngles), m_pSpinAngles->value());
    settings.setValue(QLatin1String(g_pszKnown), m_pEditKnown->text().trimmed());
}

/// The dialogs of desktops cannot choose several folders. That of Qt can once its views, which are found by
/// their class and the name "listView" (the other list is the side bar), select several rows.
void MergeInput::askForFolders()
{
    QFileDialog dialog(this, tr("Add Folders of Results"));
    dialog.setFileMode(QFileDialog::Directory);
    dialog.setOptions(QFileDialog::DontUseNativeDialog | QFileDialog::ShowDirsOnly);
    for (QAbstractItemView* pView : dialog.findChildren<QAbstractItemView*>()) {
        if (qobject_cast<QTreeView*>(pView) ||
            (qobject_cast<QListView*>(pView) && pView->objectName() == QLatin1String("listView"))) {
            pView->setSelectionMode(QAbstractItemView::ExtendedSelection);
        }
    }
    if (dialog.exec() == QDialog::Accepted) {
        giveFolders(dialog.selectedFiles());
    }
}

void MergeInput::askForKnownCells()
{
    const QString strFile = QFileDialog::getOpenFileName(this, tr("Known Cells"), m_pEditKnown->text(),
                                                         tr("Tables (*.csv *.txt *.tsv);;All files (*)"));
    if (!strFile.isEmpty()) {
        m_pEditKnown->setText(QDir::toNativeSeparators(strFile));
    }
}

void MergeInput::askForOutFolder()
{
    const QString strFolder = QFileDialog::getExistingDirectory(this, tr("Folder for the Merged Files"),
                                                                outFolder());
    if (!strFolder.isEmpty()) {
        m_bOutTyped = true;
        m_pEditOut->setText(QDir::toNativeSeparators(strFolder));
    }
}

}  // namespace tessera
