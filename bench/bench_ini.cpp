#include "BenchHome.h"

#include "services/IniCache.h"
#include "services/IniLib.h"

#include <benchmark/benchmark.h>

using namespace corvalent;

namespace {

BenchHome& home()
{
    static BenchHome h;
    return h;
}

// Every read parses the file again: what a read costs the first time, or after the file changed.
void GetKeyValue_cold(benchmark::State& state)
{
    const QString file = home().service;
    for (auto _ : state) {
        IniCache::instance().clear();
        benchmark::DoNotOptimize(GetKeyValue(QStringLiteral("Settings"), QStringLiteral("V9"), QString(), QString(),
                                             QString(), file));
    }
}
BENCHMARK(GetKeyValue_cold);

// The file is unchanged since the last read: a stat and a look-up.
void GetKeyValue_cached(benchmark::State& state)
{
    const QString file = home().service;
    GetKeyValue(QStringLiteral("Settings"), QStringLiteral("V9"), QString(), QString(), QString(), file);
    for (auto _ : state) {
        benchmark::DoNotOptimize(GetKeyValue(QStringLiteral("Settings"), QStringLiteral("V9"), QString(), QString(),
                                             QString(), file));
    }
}
BENCHMARK(GetKeyValue_cached);

// One write: parse, replace in place, write a temporary file and rename it over the old one.
void WriteKeyValue_replace(benchmark::State& state)
{
    const QString file = home().service;
    int i = 0;
    for (auto _ : state)
        WriteKeyValue(QStringLiteral("Settings"), QStringLiteral("L9"), QString::number(++i), file);
}
BENCHMARK(WriteKeyValue_replace);

} // namespace

BENCHMARK_MAIN();
