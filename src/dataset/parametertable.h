// Parameter table: range, decimals, tip, option and settings key of each parameter of pages and command
// line.
#pragma once

#include "dataset/dataset.h"
#include "records/runparameters.h"

#include <tuple>
#include <variant>
#include <vector>

namespace tessera {

/// Pointers to the records that have parameters; null for a record that is not available.
using ParameterRecords = std::tuple<DataSet*, PeakHuntingParameters*, MappingParameters*,
                                    PeakMergingParameters*, CellHuntingParameters*, IndexingParameters*,
                                    ExtractionParameters*, RefinementParameters*, SeriesDistortion*>;

template <typename TRecords>
struct MemberOfRecords;

template <typename... TRecord>
struct MemberOfRecords<std::tuple<TRecord*...>> {
    using Type = std::variant<double TRecord::*..., int TRecord::*...>;
};

/// A number of one of these records, such as &PeakHuntingParameters::m_dfPeakRadius.
using ParameterMember = MemberOfRecords<ParameterRecords>::Type;

/// The values that the option of a parameter accepts.
enum class OptionValues {
    OfPage,           ///< numbers within the range of the page
    OfPageOrAuto,     ///< likewise, or "auto": the driver finds the number
    AboveZero,        ///< numbers of the page that are not 0 after rounding
    AnyNumber,        ///< any number; the reader brings it into the range of the page
    AnyNumberOrAuto,  ///< likewise, or "auto": the driver finds the number, or "as-given": as without the
                      ///< option
};

/// The option of tessera-batch that sets a parameter.
struct ParameterOption {
    const char* pszName = nullptr;  ///< without the dashes; null: no option
    const char* pszUnit = "";       ///< as in the help
    const char* pszHelp = "";       ///< without a full stop; %1 is replaced by the initial value
    OptionValues values = OptionValues::OfPage;
};

/// The range of a number and how a page shows it.
struct NumberBox {
    double dfMinimum;
    double dfMaximum;
    int nDecimals;  ///< decimals shown, to which the number is rounded
    double dfStep;  ///< step of the arrows beside the number
    const char* pszSuffix;
};

/// A row of the table. The initial value is that of the member in a new record. Texts are UTF-8.
struct Parameter {
    ParameterMember member;
    NumberBox box;
    const char* pszTip;  ///< meaning, unit, and when to change it
    ParameterOption option = {};
    const char* pszSettingsKey = nullptr;  ///< key in the settings; null: not stored

    /// The initial value.
    double start() const;
    /// Whether the record of the number is available.
    bool isIn(const ParameterRecords& records) const;
    /// The number in its record, which must be available.
    double value(const ParameterRecords& records) const;
    /// Sets the number in its record, which must be available. It is truncated for a member of type int.
    void setValue(const ParameterRecords& records, double dfValue) const;
};

/// All parameters, in the order of the driver's help.
const std::vector<Parameter>& parameterTable();

/// The row of a member. Throws std::out_of_range for a member without a row, which is a programming error.
const Parameter& parameterOf(ParameterMember member);

}  // namespace tessera
