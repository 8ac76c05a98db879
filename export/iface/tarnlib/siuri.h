#pragma once

#include "tarnlib/curlbase.h"

/// The address of an object at a request broker: osca:iiop://server/name=value,name=value.
///
/// The values of the components are URL-encoded. An object is used by one thread at a time.
///
///     SIUri uri("broker:1570", "cms", "main server");
///     uri.insertComponent("kind", "a,b");
///     SAnsiString text = uri.makeURI();             // osca:iiop://broker:1570/cms=main+server,kind=a%2Cb
///     SAnsiString kind;
///     if (SIUri(text).getComponent("kind", kind)) ...
namespace TarnLibA500 {

/// The address of an object at a request broker.
class TARN_API SIUri : public CUrlBase {
  public:
    /// An address with one component.
    SIUri(const SAnsiString& server, const SAnsiString& name, const SAnsiString& value);
    /// The address that a text holds, taken apart as CUrlBase does. Throws an SAnsiString, such as
    /// "abc" is not a valid URI., after tracing it, when its protocol is not "osca:iiop" in any case.
    explicit SIUri(const SAnsiString& uri);
    /// Shares the texts.
    SIUri(const SIUri&) = default;
    /// Shares the texts.
    SIUri& operator=(const SIUri&) = default;
    /// Lets go of the texts.
    ~SIUri() override;

    /// The decoded text between the next "=" and the next "," (or the end) behind the first place where the name
    /// stands in the path: deliberately not only where a component begins. False, and the value as it was, when
    /// there is no such place. An empty name is reported by assertion and gives an empty value and true.
    bool getComponent(const SAnsiString& name, SAnsiString& value) const;
    /// Adds a component at the end of the path. An empty name is reported by assertion, and nothing is added.
    void insertComponent(const SAnsiString& name, const SAnsiString& value);
    /// The same as MakeURL.
    SAnsiString makeURI();
};

}  // namespace TarnLibA500
