// SectionWindow: which section of reciprocal space is made, how it is drawn, and the section itself.
#pragma once

#include "exchange/sectionpicture.h"

#include <QDialog>

#include <optional>

class QCheckBox;
class QComboBox;
class QDoubleSpinBox;
class QLabel;
class QPushButton;
class QScrollArea;
class QSettings;
class QSpinBox;

namespace tessera {

class SectionView;

/// The window; it computes nothing and reads no frame, see SectionsController.
class SectionWindow : public QDialog {
    Q_OBJECT

public:
    /// With the numbers of a first start.
    explicit SectionWindow(QWidget* pParent = nullptr);

    /// The plane that the boxes name.
    SectionPlane plane() const;
    /// What it is made with.
    SectionOptions options() const;
    /// How it is drawn in the window; files are drawn at the zoom that fills a page.
    SectionLook look() const;

    /// Keeps the numbers of the window for the next start.
    void keep(QSettings& settings) const;
    /// Takes the numbers that were kept.
    void restore(const QSettings& settings);

    QComboBox* m_pPlane;  ///< hkn, hnl, nkl
    QSpinBox* m_pLayer;
    QDoubleSpinBox* m_pThickness;   ///< Å⁻¹; 0: from the spots
    QDoubleSpinBox* m_pResolution;  ///< Å; 0: from the peaks
    QComboBox* m_pLaueClass;
    QCheckBox* m_pBackgroundOff;
    QPushButton* m_pButtonMake;
    QPushButton* m_pButtonSave;
    QDoubleSpinBox* m_pDarkest;  ///< per cent
    QDoubleSpinBox* m_pBrightest;
    QCheckBox* m_pLogarithmic;
    QCheckBox* m_pDark;
    QCheckBox* m_pIndices;
    QCheckBox* m_pLattice;
    QCheckBox* m_pRings;
    QComboBox* m_pZoom;
    SectionView* m_pView;
    QLabel* m_pReading;  ///< of the place under the pointer

signals:
    /// A choice that needs no new reading of the frames was changed.
    void lookChanged();

private:
    QWidget* makeChoices();
    QWidget* makeLook();

    QScrollArea* m_pArea;
};

}  // namespace tessera
