#include <utility>
#include <vector>

#include "config/landscape.h"
#include "config/xmldocument.h"
#include "diag/assert/levels.h"
#include "tarnlib/configfilereader.h"
#include "tarnlib/straceobj.h"

// Sections from a landscape file.
namespace TarnLibA500 {
namespace {

constexpr const char* kUnit = "configfilereader";
constexpr const char* kHostInRoute = "/H/";
constexpr const char* kYes = "1";

// A host behind a router: the route, and the host as its last station.
SAnsiString Through(const SAnsiString& route, const SAnsiString& host) {
    if (route.isEmpty() || host.isEmpty()) return host;
    return route + kHostInRoute + host;
}

// How a user gets to the service: by a server that was entered, or by a group that a message server gives a
// server for; both with a secured connection or without.
const char* OriginOf(const landscape::Service& service) {
    const bool isSecured = !service.sncName.isEmpty();
    if (service.messageServer.isEmpty()) return isSecured ? "USEREDIT_SNC" : "USEREDIT";
    return isSecured ? "MS_SEL_GROUPS_SNC" : "MS_SEL_GROUPS";
}

// The lines of a service's section.
std::vector<std::pair<const char*, SAnsiString>> ValuesOf(const landscape::Document& document,
                                                          const landscape::Service& service) {
    const landscape::Host host = document.messageServer(service.messageServer);
    const SAnsiString route = document.route(service.router);
    const bool hasMessageServer = !service.messageServer.isEmpty();
    const char* const origin = OriginOf(service);
    return {
        {"Description", document.description(service)},
        {"Server", hasMessageServer ? service.server : Through(route, service.server)},
        {"Database", service.systemId},
        {"MSSysName", hasMessageServer ? service.systemId : SAnsiString()},
        {"MSSrvName", Through(route, host.name)},
        {"MSSrvPort", host.port},
        {"SncChoice", service.sncChoice},
        {"SncName", service.sncName},
        {"Origin", origin},
        {origin, kYes},
    };
}

}  // namespace

// A line of a section; none for a value that is empty.
SAnsiString ConfigFileReader::getValueFromNameValuePair(const SAnsiString& name, const SAnsiString& value) {
    return value.isEmpty() ? SAnsiString() : SAnsiString(name + "=" + value + "\n");
}

bool ConfigFileReader::buildConfigDataFromXML(const SAnsiString& path) {
    landscape::Document document;
    SAnsiString problem;
    if (ReadXmlFile(path, XmlLimits(), document, problem) && !document.isLandscape())
        problem = "it is no landscape";
    if (!problem.isEmpty()) {
        TARN_TRACE_AT(levels::kLoss, kUnit, "ConfigFileReader::initializeFromXML() failed to read %1: %2",
                      path, problem);
        problem_ = path + ": " + problem;
        return false;
    }
    SIArray<CRefPtr<SectionData>> sections;
    for (const landscape::Service& service : document.services()) {
        SAnsiString body;
        for (const auto& [name, value] : ValuesOf(document, service))
            body.concat(getValueFromNameValuePair(name, value));
        sections.Add(new SectionData(service.name, body));
    }
    takeSections(sections, SAnsiString());
    return true;
}

bool ConfigFileReader::initializeFromXML(const SAnsiString& path) {
    if (!initialized_) initialized_ = buildConfigDataFromXML(path);
    return initialized_;
}

}  // namespace TarnLibA500
