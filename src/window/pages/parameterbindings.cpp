#include "window/pages/parameterbindings.h"

#include "window/pages/pagecontrols.h"

#include <QAbstractButton>
#include <QComboBox>
#include <QDoubleSpinBox>
#include <QGroupBox>
#include <QSpinBox>

namespace tessera {

void CParameterBindings::bindBoxes(const QWidget* pParent, const ParameterRecords& records)
{
    const auto bind = [&](auto* pSpin) {
        const Parameter* pRow = parameterOfBox(pSpin);
        if (!pRow) {
            return;
        }
        using TNumber = decltype(pSpin->value());
        m_vecBinding.push_back({[pSpin] { return double(pSpin->value()); },
                                [pSpin](double df) { pSpin->setValue(TNumber(df)); },
                                [pRow, records] { return pRow->value(records); },
                                [pRow, records](double df) { pRow->setValue(records, df); }});
    };
    for (QDoubleSpinBox* pSpin : pParent->findChildren<QDoubleSpinBox*>()) {
        bind(pSpin);
    }
    for (QSpinBox* pSpin : pParent->findChildren<QSpinBox*>()) {
        bind(pSpin);
    }
}

void CParameterBindings::bindCheck(QAbstractButton* pButton, bool& bMember, QAbstractButton* pOther)
{
    m_vecBinding.push_back({[pButton] { return pButton->isChecked() ? 1.0 : 0.0; },
                            [pButton, pOther](double df) {
                                // A radio button is only unchecked by its neighbour.
                                if (df == 0 && pOther) {
                                    pOther->setChecked(true);
                                } else {
                                    pButton->setChecked(df != 0);
                                }
                            },
                            [&bMember] { return bMember ? 1.0 : 0.0; },
                            [&bMember](double df) { bMember = df != 0; }});
}

void CParameterBindings::bindCheck(QGroupBox* pGroup, bool& bMember)
{
    m_vecBinding.push_back({[pGroup] { return pGroup->isChecked() ? 1.0 : 0.0; },
                            [pGroup](double df) { pGroup->setChecked(df != 0); },
                            [&bMember] { return bMember ? 1.0 : 0.0; },
                            [&bMember](double df) { bMember = df != 0; }});
}

void CParameterBindings::bindCombo(QComboBox* pCombo, int& nMember)
{
    bindCombo(
        pCombo, [&nMember] { return nMember; }, [&nMember](int n) { nMember = n; });
}

void CParameterBindings::bindCombo(QComboBox* pCombo, const std::function<int()>& fnMember,
                                   const std::function<void(int)>& fnSetMember)
{
    m_vecBinding.push_back(
        {[pCombo, fnMember] { return double(pCombo->count() ? pCombo->currentData().toInt() : fnMember()); },
         [pCombo](double df) {
             const int nIndex = pCombo->findData(int(df));
             if (nIndex >= 0) {
                 pCombo->setCurrentIndex(nIndex);
             }
         },
         [fnMember] { return double(fnMember()); }, [fnSetMember](double df) { fnSetMember(int(df)); }});
}

void CParameterBindings::takeFromControls()
{
    for (Binding& binding : m_vecBinding) {
        binding.fnSetMember(binding.fnControl());
        binding.dfSynced = binding.fnMember();
    }
}

void CParameterBindings::showOnControls(KeepControls keep)
{
    for (Binding& binding : m_vecBinding) {
        const double dfMember = binding.fnMember();
        const bool bKeep = keep == KeepControls::WhereMemberStays && binding.dfSynced == dfMember;
        if (!bKeep && binding.fnControl() != dfMember) {
            binding.fnSetControl(dfMember);
        }
        binding.dfSynced = binding.fnMember();
    }
}

}  // namespace tessera
