#include <utility>

#include "config/landscape.h"
#include "config/xmldocument.h"
#include "tarnlib/configfilereader.h"
#include "tarnlib/straceobj.h"

// Sections from a landscape file.
namespace TarnLibA500 {
namespace {

constexpr const char* kUnit = "configfilereader";
constexpr int kTraceLevel = 1;
constexpr const char* kHostInRoute = "/H/";
constexpr const char* kYes = "1";

// A host behind a router: the route, and the host as its last station.
SAnsiString Through(const SAnsiString& route, const SAnsiString& host) {
    if (route.isEmpty() || host.isEmpty()) return host;
    return route + kHostInRoute + host;
}

// How a user gets to the service: by a server that was entered, or by a group that a message server gives a
// server for; both with a secured connection or without.
const char* OriginOf(const LandscapeService& service) {
    const bool isSecured = !service.sncName.isEmpty();
    if (service.messageServer.isEmpty()) return isSecured ? "USEREDIT_SNC" : "USEREDIT";
    return isSecured ? "MS_SEL_GROUPS_SNC" : "MS_SEL_GROUPS";
}

}  // namespace

// A line of a section; none for a value that is empty.
SAnsiString ConfigFileReader::getValueFromNameValuePair(const SAnsiString& name, const SAnsiString& value) {
    return value.isEmpty() ? SAnsiString() : SAnsiString(name + "=" + value + "\n");
}

void ConfigFileReader::addService(const Landscape& landscape, const LandscapeService& service) {
    const Landscape::Host host = landscape.messageServer(service.messageServer);
    const SAnsiString route = landscape.route(service.router);
    const bool hasMessageServer = !service.messageServer.isEmpty();
    const char* const origin = OriginOf(service);
    const std::pair<const char*, SAnsiString> values[] = {
        {"Description", landscape.description(service)},
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
    SAnsiString body;
    for (const auto& [name, value] : values) body.concat(getValueFromNameValuePair(name, value));
    sections_.Add(new SectionData(service.name, body));
}

bool ConfigFileReader::buildConfigDataFromXML(const SAnsiString& path) {
    Landscape landscape;
    SAnsiString problem;
    if (!ReadXmlFile(path, XmlLimits(), landscape, problem) || !landscape.isLandscape()) {
        TARN_TRACE_AT(kTraceLevel, kUnit, "ConfigFileReader::initializeFromXML() failed to read %1: %2", path,
                      problem.isEmpty() ? SAnsiString("it is no landscape") : problem);
        return false;
    }
    sections_.RemoveAll();
    for (const LandscapeService& service : landscape.services()) addService(landscape, service);
    buildNameIndex();
    return true;
}

bool ConfigFileReader::initializeFromXML(const SAnsiString& path) {
    if (!initialized_) initialized_ = buildConfigDataFromXML(path);
    return initialized_;
}

}  // namespace TarnLibA500
