// The Smart Data Collector walked through any grabbed text with any sequence of steps: it never leaves its lines,
// and a finished collector stays finished.

#include "FuzzInput.h"
#include "grab/AddressRecognition.h"
#include "grab/SmartDataCollector.h"

using namespace corvalent;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    if (size < 1)
        return 0;
    // The first bytes choose the steps, the rest is the grabbed text.
    const qsizetype steps = qMin<qsizetype>(data[0] % 32, qsizetype(size) - 1);
    const QByteArray input = fuzz::bytes(data + 1, size - 1);
    const QString grabbed = fuzz::text(input.mid(steps));

    SmartDataCollector collector;
    collector.Load(grabbed);
    for (qsizetype i = 0; i < steps; ++i) {
        const uint8_t step = uint8_t(input.at(i));
        const bool wasFinished = collector.isFinished();
        switch (step % 4) {
        case 0: collector.cmdUp_Click(); break;
        case 1: collector.cmdDown_Click(); break;
        case 2: collector.RemoveText(false); break;
        default: {
            const int length = int(collector.current().size());
            const int start = length ? (step >> 2) % length : 0;
            collector.RemoveText(true, start, length ? (step >> 4) % (length - start + 1) : 0);
        }
        }
        if (wasFinished && !collector.isFinished())
            fuzz::fail("a finished collector came back");
        if (!collector.isFinished()
            && (collector.currentIndex() < 0 || collector.currentIndex() >= collector.lines().size()))
            fuzz::fail("current line outside the lines", QString::number(collector.currentIndex()));
    }

    // What a grab into State or Zip makes of the same text.
    const CityStateZip parts = RecogniseCityStateZip(grabbed);
    if (parts.state && parts.state->size() != 2)
        fuzz::fail("a state that is not a postal code", *parts.state);
    (void)isMultiLine(grabbed);
    return 0;
}
