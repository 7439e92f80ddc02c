// CSimulationOptions: the options of tessera-simulate, and the series that they ask for.
#pragma once

#include "simulate/simulationparameters.h"

#include <QCommandLineParser>

#include <vector>

namespace tessera {

/// Adds options to a parser and takes their values from it.
class CSimulationOptions {
public:
    CSimulationOptions() = default;
    CSimulationOptions(const CSimulationOptions&) = delete;
    CSimulationOptions& operator=(const CSimulationOptions&) = delete;

    /// All but --help, with what they are without being given.
    void addTo(QCommandLineParser& parser);
    /// Takes what a parser has parsed. @return empty, or what is wrong with it
    QString read(const QCommandLineParser& parser);
    /// The series that was asked for.
    const SimulationParameters& parameters() const { return m_parameters; }

private:
    // An option with a number: where its value goes.
    struct NumberOption {
        const char* pName;
        const char* pHelp;
        double* pdf;
    };
    struct WholeOption {
        const char* pName;
        const char* pHelp;
        int* pn;
    };
    std::vector<NumberOption> numberOptions();
    std::vector<WholeOption> wholeOptions();
    QString readNumbers(const QCommandLineParser& parser);
    QString readFilesAndFormat(const QCommandLineParser& parser);
    QString readSecondAndSupercell(const QCommandLineParser& parser);
    QString readTold(const QCommandLineParser& parser);

    SimulationParameters m_parameters;
    int m_nSeed = int(SimulationParameters().nSeed);
    double m_dfBarrel = 0;  ///< per cent; the parameters have it with the other sign
};

}  // namespace tessera
