#include "tarnlib/frsurl.h"

#include "diag/assert/levels.h"
#include "tarnlib/pathparts.h"
#include "tarnlib/straceobj.h"
#include "url/frsprotocol.h"
#include "url/urltext.h"

namespace TarnLibA500 {
namespace {

constexpr const char* kNoProtocol = "No protocol is specified in the file URL %1";
constexpr const char* kOtherProtocol =
    "The protocol specified in the file URL %1 is not valid. Protocol should be %2";
constexpr const char* kNoServer = "No File Repository Server name was specified in the file URL %1";

[[noreturn]] void Throw(const char* message, const SAnsiString& url) {
    const FRSUrlException failure(FRSUrlException::frsInvalidUrl, message, url);
    TARN_TRACE_AT(levels::kFailure, "frsurl", "%1", failure.toString());
    throw failure;
}

bool IsFrs(const SAnsiString& protocol) {
    return protocol.compareNoCase(kFrsProtocol) == 0;
}

SAnsiString Lower(const SAnsiString& text) {
    SAnsiString lower(text);
    lower.toLower();
    return lower;
}

}  // namespace

FRSUrl::FRSUrl() {
    SetProtocol(kFrsProtocol);
}

FRSUrl::FRSUrl(const SAnsiString& url) {
    ParseAndSetUrl(url);
}

FRSUrl::FRSUrl(const SAnsiString& server, const SAnsiString& path) : FRSUrl() {
    SetServer(server);
    SetPath(path);
}

FRSUrl& FRSUrl::operator=(const SAnsiString& url) {
    ParseAndSetUrl(url);
    return *this;
}

FRSUrl::~FRSUrl() = default;

SAnsiString FRSUrl::compose() const {
    SAnsiString path = UnifyAllSlashes(GetPath(), '/');
    if (path.startsWith(SAnsiString::Char('/'))) path = path.mid(1);
    return SAnsiString(kFrsProtocol) + "://" + GetServer() + "/" + path;
}

SAnsiString FRSUrl::MakeURL() {
    return compose();
}

bool FRSUrl::ParseAndSetUrl(const SAnsiString& url) {
    TextPart rest(url);
    TextPart protocol(rest);
    if (!CutAt(rest, "://", protocol)) Throw(kNoProtocol, url);
    if (!IsFrs(protocol.toString())) Throw(kOtherProtocol, url);
    const TextPart server = CutBefore(rest, "/");
    if (server.isEmpty()) Throw(kNoServer, url);
    FRSUrl parsed(server.toString(), rest.toString());
    parsed.CUrlBase::SetQueryString(GetQueryString());
    *this = parsed;
    return true;
}

// SplitPathEx leaves alone what a path does not have.
void FRSUrl::SetPath(const SAnsiString& path) {
    const SAnsiString lower = Lower(path);
    SAnsiString dir;
    SAnsiString name;
    SAnsiString extension;
    SplitPathEx(lower, dir, name, extension);
    filename_ = name + extension;
    dir_ = dir;
    CUrlBase::SetPath(lower);
}

void FRSUrl::SetDir(const SAnsiString& dir) {
    const SAnsiString lower = Lower(dir);
    CUrlBase::SetPath(MakePath(lower, filename_));
    dir_ = lower;
}

void FRSUrl::SetFilename(const SAnsiString& filename) {
    const SAnsiString lower = Lower(filename);
    CUrlBase::SetPath(MakePath(dir_, lower));
    filename_ = lower;
}

bool FRSUrl::IsFRSUrl(const SAnsiString& text) {
    TextPart rest(text);
    TextPart protocol(rest);
    return CutAt(rest, "://", protocol) && IsFrs(protocol.toString());
}

SAnsiString& operator<<(SAnsiString& out, const FRSUrl& url) {
    return out << url.compose();
}

}  // namespace TarnLibA500
