// A server's listing, FTP or HTML, from the fuzzer: every name taken from it is a plain name, however the
// listing is built.

#include "FuzzInput.h"
#include "download/ServerListing.h"

using namespace corvalent;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const QByteArray input = fuzz::bytes(data, size);
    for (const ServerListing& listing : {ParseFtpNameList(input), ParseHtmlListing(input)}) {
        for (const QString& name : listing.names) {
            if (!IsPlainName(name) || name.toUtf8().size() > kMaxServerNameBytes || name.contains(QLatin1Char('/'))
                || name.contains(QLatin1Char('\\')) || name.startsWith(QLatin1Char('.')))
                fuzz::fail("a name that is not plain", name);
        }
        for (const QString& shown : ShownServiceNames(listing.names)) {
            if (ServiceFileName(shown).isEmpty())
                fuzz::fail("a shown service without a file", shown);
        }
    }
    return 0;
}
