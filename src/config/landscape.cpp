#include "config/landscape.h"

namespace TarnLibA500::landscape {
namespace {

constexpr const char* kServiceType = "mirelms";

// Without white space around it; control characters become blanks, so that no text can pretend to be two
// lines.
SAnsiString TextOf(const XmlElement& element, const char* name) {
    constexpr unsigned char kFirstPrintable = 0x20;
    SAnsiString value = element.attribute(name);
    if (value.isEmpty()) return value;
    char* const text = value.detach();
    for (std::uint32_t i = 0; i < value.getLength(); ++i) {
        if (static_cast<unsigned char>(text[i]) < kFirstPrintable) text[i] = ' ';
    }
    return value.trim();
}

Service ServiceOf(const XmlElement& element) {
    return {TextOf(element, "uuid"),     TextOf(element, "name"),   TextOf(element, "server"),
            TextOf(element, "systemid"), TextOf(element, "msid"),   TextOf(element, "routerid"),
            TextOf(element, "sncop"),    TextOf(element, "sncname")};
}

// "host:port"; a port of its own counts where the host has none. More colons are those of an address.
Host HostOf(const XmlElement& element) {
    const SAnsiString host = TextOf(element, "host");
    const SAnsiString::iterator colon = host.find(':');
    if (colon == host.end() || host.findLast(':') != colon) return {host, TextOf(element, "port")};
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

SAnsiString Document::parent() const {
    return open_.empty() ? SAnsiString() : open_.back();
}

void Document::startElement(const XmlElement& element) {
    const SAnsiString name = element.name();
    if (open_.empty()) {
        isLandscape_ = name == "Landscape";
    } else if (name == "Service" && parent() == "Services") {
        if (TextOf(element, "type") == kServiceType) services_.push_back(ServiceOf(element));
    } else if (name == "Messageserver" && parent() == "Messageservers") {
        messageServers_[TextOf(element, "uuid")] = HostOf(element);
    } else if (name == "Router" && parent() == "Routers") {
        routes_[TextOf(element, "uuid")] = TextOf(element, "router");
    } else if (name == "Item") {
        itemNames_[TextOf(element, "uuid")] = TextOf(element, "name");
    }
    open_.push_back(name);
}

void Document::endElement() {
    open_.pop_back();
}

Host Document::messageServer(const SAnsiString& uuid) const {
    return Look(messageServers_, uuid);
}

SAnsiString Document::route(const SAnsiString& uuid) const {
    return Look(routes_, uuid);
}

SAnsiString Document::description(const Service& service) const {
    const SAnsiString item = Look(itemNames_, service.uuid);
    return item.isEmpty() ? service.name : item;
}

}  // namespace TarnLibA500::landscape
