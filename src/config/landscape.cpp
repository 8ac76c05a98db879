#include "config/landscape.h"

namespace TarnLibA500 {
namespace {

constexpr const char* kServiceType = "mirelms";

LandscapeService ServiceOf(const XmlElement& element) {
    return {element.attribute("uuid"),     element.attribute("name"),   element.attribute("server"),
            element.attribute("systemid"), element.attribute("msid"),   element.attribute("routerid"),
            element.attribute("sncop"),    element.attribute("sncname")};
}

// "host:port"; a port of its own counts where the host has none.
Landscape::Host HostOf(const XmlElement& element) {
    const SAnsiString host = element.attribute("host");
    const SAnsiString::iterator colon = host.findLast(':');
    if (colon == host.end()) return {host, element.attribute("port")};
    return {host.left(colon), host.mid(SAnsiString::iterator(colon.getPtr() + 1))};
}

// A reference that is empty leads nowhere.
template <class Value>
Value Look(const std::map<SAnsiString, Value>& values, const SAnsiString& key) {
    if (key.isEmpty()) return Value();
    const auto found = values.find(key);
    return found != values.end() ? found->second : Value();
}

}  // namespace

SAnsiString Landscape::parent() const {
    return open_.empty() ? SAnsiString() : open_.back();
}

void Landscape::startElement(const XmlElement& element) {
    const SAnsiString name = element.name();
    if (open_.empty()) {
        isLandscape_ = name == "Landscape";
    } else if (name == "Service" && parent() == "Services") {
        if (element.attribute("type") == kServiceType) services_.push_back(ServiceOf(element));
    } else if (name == "Messageserver" && parent() == "Messageservers") {
        messageServers_[element.attribute("uuid")] = HostOf(element);
    } else if (name == "Router" && parent() == "Routers") {
        routes_[element.attribute("uuid")] = element.attribute("router");
    } else if (name == "Item") {
        itemNames_[element.attribute("uuid")] = element.attribute("name");
    }
    open_.push_back(name);
}

void Landscape::endElement() {
    open_.pop_back();
}

Landscape::Host Landscape::messageServer(const SAnsiString& uuid) const {
    return Look(messageServers_, uuid);
}

SAnsiString Landscape::route(const SAnsiString& uuid) const {
    return Look(routes_, uuid);
}

SAnsiString Landscape::description(const LandscapeService& service) const {
    const SAnsiString item = Look(itemNames_, service.uuid);
    return item.isEmpty() ? service.name : item;
}

}  // namespace TarnLibA500
