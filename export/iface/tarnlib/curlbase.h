#pragma once

#include "tarnlib/sstring.h"
#include "tarnlib/tarnapi.h"

/// A URL as four texts: protocol://server/path?query.
///
/// Nothing is escaped or unescaped here. Texts are in the process's code page and are cut by whole characters.
/// An object is used by one thread at a time.
///
///     CUrlBase url("https", "example.com", "a/b", "x=1");
///     url.SetPath("c");
///     SAnsiString text = url.MakeURL();                // https://example.com/c?x=1
namespace TarnLibA500 {

/// What all URLs have.
class TARN_API CUrlBase {
  public:
    /// Four empty texts.
    CUrlBase() = default;
    /// The four texts.
    CUrlBase(const SAnsiString& protocol, const SAnsiString& server, const SAnsiString& path,
             const SAnsiString& query);
    /// Shares the texts.
    CUrlBase(const CUrlBase&) = default;
    /// Shares the texts.
    CUrlBase& operator=(const CUrlBase&) = default;
    /// Lets go of the texts.
    virtual ~CUrlBase();
    /// Sets the text behind the "?".
    virtual void SetQueryString(const SAnsiString& query);
    /// The whole URL. The "/" behind the server is always there, the "?" only before a query string.
    virtual SAnsiString MakeURL();

    /// The text before "://".
    SAnsiString GetProtocol() const { return protocol_; }
    /// Sets the text before "://".
    void SetProtocol(const SAnsiString& protocol) { protocol_ = protocol; }
    /// The text between "://" and the next "/".
    SAnsiString GetServer() const { return server_; }
    /// Sets the text between "://" and the next "/".
    void SetServer(const SAnsiString& server) { server_ = server; }
    /// The text behind the server, without the "/" between them.
    SAnsiString GetPath() const { return path_; }
    /// Sets the text behind the server.
    void SetPath(const SAnsiString& path) { path_ = path; }
    /// The text behind the "?".
    SAnsiString GetQueryString() const { return query_; }

  protected:
    /// Takes a URL apart; always true. The protocol ends at the first "://", then the server at the first "/",
    /// then the path at the first "?". Deliberately, a text without "://" leaves the protocol as it was, and one
    /// without a "/" leaves the server as it was: what is there is then the path. Without a "?" the query string
    /// is empty.
    bool ParseAndSetUrl(const SAnsiString& url);

  private:
    SAnsiString protocol_;
    SAnsiString server_;
    SAnsiString path_;
    SAnsiString query_;
};

}  // namespace TarnLibA500
