#include "request/Go.h"

#include "common/ErrorTrap.h"
#include "common/Launcher.h"
#include "common/ProgramFolder.h"
#include "common/Prompter.h"
#include "request/PostPage.h"
#include "request/PostalLookup.h"
#include "request/RequestBuilder.h"
#include "services/ServiceDefinition.h"
#include "services/ServiceCatalogue.h"

namespace corvalent {

GoPlan PlanGo(const QString& serviceFile, const FieldTexts& fields)
{
    GoPlan plan;
    const QString url = ServiceSetting(serviceFile, QStringLiteral("URL"));
    if (IsPostalLookup(url)) {
        plan.kind = GoPlan::Kind::Post;
        return plan;
    }
    if (url.isEmpty()) {
        plan.kind = GoPlan::Kind::NoUrl;
        return plan;
    }
    const CountryFileResolution country = ResolveCountryFile(serviceFile);
    plan.countryFilePath = country.value;
    if (!country.exists) {
        plan.kind = GoPlan::Kind::MissingCountryFile;
        plan.serviceName = FileStem(serviceFile);
        return plan;
    }
    plan.countryFilePath = country.fullPath;
    plan.address = BuildRequest(serviceFile, fields, plan.countryFilePath);
    return plan;
}

GoResult RunGo(const QString& serviceFile, const FieldTexts& fields, bool keepOpen, QString& countryFilePath,
               const std::function<void(const QString& serviceName)>& openCountryDialog)
{
    GoResult result;
    trappedSub(QStringLiteral("frmMain: Sub cmdGO_Click"), [&] {
        result.plan = PlanGo(serviceFile, fields);
        const GoPlan& plan = result.plan;
        if (plan.kind != GoPlan::Kind::Post && plan.kind != GoPlan::Kind::NoUrl)
            countryFilePath = plan.countryFilePath;
        switch (plan.kind) {
        case GoPlan::Kind::Post:
            WritePostPage(serviceFile, fields);
            break;
        case GoPlan::Kind::NoUrl:
            Prompter::instance().message(kNoUrlMessage, Prompter::Exclamation);
            break;
        case GoPlan::Kind::MissingCountryFile:
            Prompter::instance().message(kMissingCountryFileMessage, Prompter::OkOnly);
            if (openCountryDialog)
                openCountryDialog(plan.serviceName);
            break;
        case GoPlan::Kind::Get:
            Launcher::instance().open(plan.address, ProgramFolder::path());
            result.closeWindow = !keepOpen;
            break;
        }
    });
    return result;
}

} // namespace corvalent
