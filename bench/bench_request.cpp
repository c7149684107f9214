#include "BenchHome.h"

#include "common/ProgramFolder.h"
#include "request/Go.h"
#include "request/RequestBuilder.h"
#include "services/IniCache.h"

#include <benchmark/benchmark.h>

using namespace corvalent;

namespace {

BenchHome& home()
{
    static BenchHome h;
    return h;
}

FieldTexts tenFields()
{
    return {QStringLiteral("Hélène Côté"), QStringLiteral("Boulangerie Ève & Fils"),
            QStringLiteral("1234 rue Sainte-Catherine Ouest"), QStringLiteral("Montréal"), QStringLiteral("QC"),
            QStringLiteral("H3G 1P1"), QStringLiteral("Canada"), QStringLiteral("(514) 555-0199"),
            QStringLiteral("(514) 555-0100"), QStringLiteral("Notes éàü")};
}

// What GO costs for a ten-row service whose files are already cached (the usual case: the service was just
// selected and its fields captured).
void BuildRequest_tenRows_cached(benchmark::State& state)
{
    const FieldTexts fields = tenFields();
    const QString countries = ProgramFolder::join(home().dir.path(), QStringLiteral("Countries.ini"));
    for (auto _ : state)
        benchmark::DoNotOptimize(BuildRequest(home().service, fields, countries));
}
BENCHMARK(BuildRequest_tenRows_cached);

// The same with every file parsed anew, as after an edit of the service.
void BuildRequest_tenRows_cold(benchmark::State& state)
{
    const FieldTexts fields = tenFields();
    const QString countries = ProgramFolder::join(home().dir.path(), QStringLiteral("Countries.ini"));
    for (auto _ : state) {
        IniCache::instance().clear();
        benchmark::DoNotOptimize(BuildRequest(home().service, fields, countries));
    }
}
BENCHMARK(BuildRequest_tenRows_cold);

// Every step of GO that is not a widget: URL, postal check, country file, request.
void PlanGo_tenRows_cached(benchmark::State& state)
{
    const FieldTexts fields = tenFields();
    for (auto _ : state)
        benchmark::DoNotOptimize(PlanGo(home().service, fields));
}
BENCHMARK(PlanGo_tenRows_cached);

} // namespace

BENCHMARK_MAIN();
