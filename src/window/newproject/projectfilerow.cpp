#include "window/newproject/projectfilerow.h"

#include "dataset/newproject.h"
#include "window/newproject/formrows.h"
#include "window/pages/controltips.h"

#include <QDir>
#include <QFileDialog>
#include <QFileInfo>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>

namespace tessera {

ProjectFileRow::ProjectFileRow(QWidget* pParent) : QWidget(pParent)
{
    m_pFileEdit = new QLineEdit(this);
    m_pBrowseButton = makeFormButton(tr("Browse..."), this);
    explain(m_pFileEdit,
            tr("Where the project file is written. Results are written beside it, so best beside the "
               "frames, which it names relative to its own folder."));
    explain(m_pBrowseButton, tr("Chooses folder and name of the project file."));
    auto* pLayout = new QHBoxLayout(this);
    pLayout->setContentsMargins(0, 0, 0, 0);
    pLayout->addWidget(new QLabel(tr("Project File"), this));
    pLayout->addWidget(m_pFileEdit, 1);
    pLayout->addWidget(m_pBrowseButton);
    connect(m_pFileEdit, &QLineEdit::textEdited, this, [this](const QString& str) {
        m_bTyped = !str.isEmpty();
        emit changed();
    });
}

QString ProjectFileRow::file(const QString& strFolder) const
{
    const QString strFile = QDir::fromNativeSeparators(m_pFileEdit->text().trimmed());
    if (strFile.isEmpty() || strFile.endsWith(QLatin1Char('/'))) {
        return {};
    }
    const QString strPath = QDir(strFolder).absoluteFilePath(strFile);
    return QFileInfo(strPath).suffix().toLower() == QLatin1String("ed3d") ? strPath
                                                                          : strPath + QStringLiteral(".ed3d");
}

void ProjectFileRow::propose(const QStringList& listFrame)
{
    if (!m_bTyped) {
        m_pFileEdit->setText(QDir::toNativeSeparators(proposedProjectFile(listFrame)));
    }
}

void ProjectFileRow::ask(const QString& strFolder)
{
    // Whether a former file may go is asked once, when it is written.
    const QString strFormer = file(strFolder);
    const QString strFile = QFileDialog::getSaveFileName(
        window(), tr("Save Project As"), strFormer.isEmpty() ? strFolder : strFormer,
        tr("ED3D Project(*.ed3d)"), nullptr, QFileDialog::DontConfirmOverwrite);
    if (strFile.isEmpty()) {
        return;
    }
    m_pFileEdit->setText(QDir::toNativeSeparators(strFile));
    m_bTyped = true;
    emit changed();
}

}  // namespace tessera
