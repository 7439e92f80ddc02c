// The table of parameters: what there is to know of each number that pages and command line give to the runs.
#pragma once

#include "dataset/dataset.h"
#include "records/runparameters.h"

#include <tuple>
#include <variant>
#include <vector>

namespace tessera {

/// The records that hold parameters; null for one that is not at hand.
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

/// What the option of a parameter takes.
enum class OptionValues {
    OfPage,           ///< the numbers that the page holds
    OfPageOrAuto,     ///< likewise, or "auto": the driver finds the number
    AboveZero,        ///< those of the page that are not 0 at its decimals
    AnyNumber,        ///< each number; what reads it brings it into the range of the page
    AnyNumberOrAuto,  ///< likewise, or "auto": the driver finds the number; "as-given": as without the option
};

/// The option of tessera-batch that sets a parameter.
struct ParameterOption {
    const char* pszName = nullptr;  ///< without the dashes; null: there is none
    const char* pszUnit = "";       ///< as the help shows it
    const char* pszHelp = "";       ///< without a full stop; %1 stands for the start value
    OptionValues values = OptionValues::OfPage;
};

/// The box that a page shows a number in.
struct NumberBox {
    double dfMinimum;
    double dfMaximum;
    int nDecimals;  ///< shown, and rounded to
    double dfStep;  ///< of the arrows beside the number
    const char* pszSuffix;
};

/// A row of the table. The start value is that of the member in a new record. Texts are UTF-8.
struct Parameter {
    ParameterMember member;
    NumberBox box;
    const char* pszTip;  ///< meaning, unit, which way to turn it
    ParameterOption option = {};
    const char* pszSettingsKey = nullptr;  ///< where it is kept from one start to the next; null: it is not

    double start() const;
    bool isIn(const ParameterRecords& records) const;
    /// The number in its record, which has to be at hand.
    double value(const ParameterRecords& records) const;
    /// Puts a number into its record, which has to be at hand; one of a whole-number member is cut to int.
    void setValue(const ParameterRecords& records, double dfValue) const;
};

/// All parameters, in the order of the driver's help.
const std::vector<Parameter>& parameterTable();

/// The row of a member. Throws std::out_of_range for a member without one, which is a fault of the program.
const Parameter& parameterOf(ParameterMember member);

}  // namespace tessera
