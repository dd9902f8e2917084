// quillotone-bench [name ...]: runs the named benchmarks (all when none is
// named) and prints one "name: figure unit" line each.
#include "Bench.h"

#include <QApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QTextStream>
#include <algorithm>
#include <map>
#include <vector>

namespace {
std::map<QString, std::function<BenchFigure()>>& registry()
{
    static std::map<QString, std::function<BenchFigure()>> all;
    return all;
}
}  // namespace

bool RegisterBench(const QString& name, std::function<BenchFigure()> run)
{
    registry().emplace(name, std::move(run));
    return true;
}

QString BuiltProgram(const QString& name)
{
    return QDir(QCoreApplication::applicationDirPath()).filePath(QStringLiteral("../bin/") + name);
}

double MedianMilliseconds(int runs, const std::function<void()>& call)
{
    std::vector<double> times;
    for (int i = 0; i < runs; ++i) {
        QElapsedTimer timer;
        timer.start();
        call();
        times.push_back(timer.nsecsElapsed() / 1e6);
    }
    std::sort(times.begin(), times.end());
    return times[times.size() / 2];
}

int main(int argc, char** argv)
{
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    QStringList wanted = app.arguments().mid(1);
    QTextStream out(stdout);
    int status = 0;
    if (wanted.isEmpty()) {
        for (const auto& [name, run] : registry())
            wanted << name;
    }
    for (const QString& name : wanted) {
        const auto it = registry().find(name);
        if (it == registry().end()) {
            out << name << ": unknown benchmark\n";
            status = 1;
            continue;
        }
        const BenchFigure figure = it->second();
        out << name << ": " << QString::number(figure.value, 'f', 3) << ' ' << figure.unit << '\n';
        out.flush();
    }
    return status;
}
