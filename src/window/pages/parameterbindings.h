// ParameterBindings: the controls of the pages and the members that they stand for.
#pragma once

#include "dataset/parametertable.h"

#include <functional>
#include <optional>
#include <type_traits>
#include <vector>

class QAbstractButton;
class QComboBox;
class QGroupBox;
class QWidget;

namespace tessera {

/// Which controls a way back from the members leaves alone.
enum class KeepControls {
    None,             ///< each control shows its member
    WhereMemberStays  ///< not those whose member is as it was when it last went either way
};

/// Controls, each with a member of the same meaning. Controls and members have to outlive this.
class CParameterBindings {
public:
    /// Binds each box below `pParent` that makeSpin() made to the number of its row in the records.
    void bindBoxes(const QWidget* pParent, const ParameterRecords& records);
    /// A check box, or a radio button whose being checked is the member; then `pOther` is its neighbour.
    void bindCheck(QAbstractButton* pButton, bool& bMember, QAbstractButton* pOther = nullptr);
    /// A checkable group.
    void bindCheck(QGroupBox* pGroup, bool& bMember);
    /// A list whose item data is the number; nothing is chosen as long as it has no items.
    void bindCombo(QComboBox* pCombo, int& nMember);
    /// The same for a member whose values have names.
    template <typename TEnum, typename = std::enable_if_t<std::is_enum_v<TEnum>>>
    void bindCombo(QComboBox* pCombo, TEnum& member)
    {
        bindCombo(
            pCombo, [&member] { return int(member); }, [&member](int n) { member = TEnum(n); });
    }

    /// The members take what the controls show.
    void takeFromControls();
    /// Each control whose value differs from its member is set.
    void showOnControls(KeepControls keep);

private:
    void bindCombo(QComboBox* pCombo, const std::function<int()>& fnMember,
                   const std::function<void(int)>& fnSetMember);

    // Control and member, both seen as a number.
    struct Binding {
        std::function<double()> fnControl;
        std::function<void(double)> fnSetControl;
        std::function<double()> fnMember;
        std::function<void(double)> fnSetMember;
        std::optional<double> dfSynced = {};  // the member as it last went either way; none: it did not yet
    };

    std::vector<Binding> m_vecBinding;
};

}  // namespace tessera
