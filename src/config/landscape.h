#pragma once

#include <map>
#include <vector>

#include "config/xmldocument.h"
#include "tarnlib/sstring.h"

/// Landscape documents: the connections that a desktop client knows.
namespace TarnLibA500::landscape {

/// A service as a landscape document has it.
struct Service {
    SAnsiString uuid;
    SAnsiString name;
    SAnsiString server;
    SAnsiString systemId;
    SAnsiString messageServer;  ///< its uuid
    SAnsiString router;         ///< its uuid
    SAnsiString sncChoice;
    SAnsiString sncName;
};

/// Where a message server is.
struct Host {
    SAnsiString name;
    SAnsiString port;
};

/// The parts of a landscape document that connections are made of. Message servers, routers and the names of
/// items may stand before or behind the services that refer to them.
class Document final : public XmlReceiver {
  public:
    void startElement(const XmlElement& element) override;
    void endElement() override;

    /// False when the document was something else.
    bool isLandscape() const noexcept { return isLandscape_; }
    const std::vector<Service>& services() const noexcept { return services_; }
    /// Empty for one that is not there.
    Host messageServer(const SAnsiString& uuid) const;
    SAnsiString route(const SAnsiString& uuid) const;
    /// What a service is called where people choose one: the name of the item with its uuid, or its own.
    SAnsiString description(const Service& service) const;

  private:
    SAnsiString parent() const;

    bool isLandscape_ = false;
    std::vector<SAnsiString> open_;  // the elements around, from the root on
    std::vector<Service> services_;
    std::map<SAnsiString, Host> messageServers_;
    std::map<SAnsiString, SAnsiString> routes_;
    std::map<SAnsiString, SAnsiString> itemNames_;
};

}  // namespace TarnLibA500::landscape
