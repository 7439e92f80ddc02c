// SectionsController: sections of reciprocal space in the window, made, read, chosen from and saved.
#pragma once

#include "dataset/dataset.h"
#include "integration/reciprocalsection.h"
#include "records/runreport.h"
#include "records/runresult.h"

#include <QObject>
#include <QString>

#include <functional>
#include <memory>
#include <optional>
#include <vector>

class QPushButton;
class QSettings;
class QWidget;

namespace tessera {

class SectionWindow;

/// What the sections ask of the main window; none of it is owned.
struct SectionsHost {
    const DataSet* pData = nullptr;
    QWidget* pParent = nullptr;  ///< of the window of the sections
    /// A run that its button stops.
    std::function<void(QPushButton*, const std::function<void(CRunReport&)>&)> fnRun;
    /// Makes a section from the frames.
    std::function<RunResult<std::vector<ReciprocalSection>>(const SectionPlane&, const SectionOptions&,
                                                            CRunReport&)>
        fnMake;
    std::function<void(int)> fnChoose;                       ///< a reflection by its number
    std::function<void(const QString&)> fnComplain;          ///< a red line
    std::function<std::unique_ptr<QSettings>()> fnSettings;  ///< of the program
};

/// Keeps the last section until another series comes. What changes its look draws it anew at once; what
/// needs the frames waits for "Make".
class SectionsController : public QObject {
    Q_OBJECT

public:
    /// No window yet: it is made when it is first shown.
    explicit SectionsController(const SectionsHost& host, QObject* pParent = nullptr);

    /// Opens the window, with what was chosen last.
    void showWindow();
    /// Makes the section that the window names. A run that fails or is stopped leaves the former one.
    void make();
    /// Writes the section: counts or picture by the suffix of the name, which is .mrc or .png.
    /// @param pstrReason  may be null
    bool save(const QString& strFile, QString* pstrReason) const;
    /// Another series comes: there is no section, and the window goes.
    void forget();
    /// The main window goes: keeps the choices.
    void close();

    SectionWindow* window() const { return m_pWindow; }  ///< null before it was first opened
    /// The section that is shown; null: none.
    const ReciprocalSection* section() const { return m_section ? &*m_section : nullptr; }

private:
    void makeWindow();
    void draw();
    void readPlace(const QPointF& ptSection);
    void choose(const QPointF& ptSection);
    void askAndSave();

    SectionsHost m_host;
    SectionWindow* m_pWindow = nullptr;  ///< the parent owns it
    std::optional<ReciprocalSection> m_section;
};

}  // namespace tessera
