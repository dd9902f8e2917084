#pragma once
// A named benchmark prints one figure. Register one with
//   static const bool registered = RegisterBench("Name", [] { ...; return BenchFigure{ms, "ms"}; });
#include <QString>
#include <functional>

struct BenchFigure {
    double value;
    QString unit;
};

bool RegisterBench(const QString& name, std::function<BenchFigure()> run);

// A program built beside quillotone-bench.
QString BuiltProgram(const QString& name);

// Median wall time of a repeated call, in milliseconds.
double MedianMilliseconds(int runs, const std::function<void()>& call);
