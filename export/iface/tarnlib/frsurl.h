#pragma once

#include "tarnlib/curlbase.h"
#include "tarnlib/frsurlexception.h"

/// The URL of a file in the file repository: frs://server/directory/file.
///
/// The server keeps its case; the path is always in lower case, and either slash separates its parts. There is
/// no query string: a "?" belongs to the path. An object is used by one thread at a time.
///
///     FRSUrl url("FRS://Server/Dir\\File.TXT");          // or FRSUrlException
///     SAnsiString folder = url.GetDir();                 // "dir\"
///     url.SetFilename("Other.txt");
///     SAnsiString text = url.MakeURL();                  // frs://Server/dir/other.txt
namespace TarnLibA500 {

/// The URL of a file in the file repository.
class TARN_API FRSUrl : public CUrlBase {
  public:
    /// The protocol "frs" and nothing else.
    FRSUrl();
    /// The URL that a text holds; see ParseAndSetUrl.
    explicit FRSUrl(const SAnsiString& url);
    /// The server as it is, and the path as SetPath takes it.
    FRSUrl(const SAnsiString& server, const SAnsiString& path);
    /// Shares the texts.
    FRSUrl(const FRSUrl&) = default;
    /// Shares the texts.
    FRSUrl& operator=(const FRSUrl&) = default;
    /// Takes on the URL that a text holds; see ParseAndSetUrl.
    FRSUrl& operator=(const SAnsiString& url);
    /// Lets go of the texts.
    ~FRSUrl() override;
    /// "frs://", the server, "/" and the path with "/" for every "\"; one "/" at the start of the path is
    /// dropped.
    SAnsiString MakeURL() override;

    /// Takes a URL apart; true. Throws FRSUrlException, which is traced, and leaves the object as it was, when
    /// the text has no "://", another protocol than "frs" (in any case), or no server. Without a path directory
    /// and file name become empty.
    bool ParseAndSetUrl(const SAnsiString& url);
    /// Sets the path, in lower case, and from it directory (with its last slash) and file name. A path with a
    /// directory, a name or an extension of more than 255 bytes is reported by assertion; both are empty then.
    void SetPath(const SAnsiString& path);
    /// The directory, in lower case.
    SAnsiString GetDir() const { return dir_; }
    /// Sets the directory, in lower case; the path is put together as MakePath does.
    void SetDir(const SAnsiString& dir);
    /// The name of the file with its extension, in lower case.
    SAnsiString GetFilename() const { return filename_; }
    /// Sets the name of the file, in lower case; the path is put together as MakePath does.
    void SetFilename(const SAnsiString& filename);

    /// True when the text has "://" and before it "frs" in any case.
    static bool IsFRSUrl(const SAnsiString& text);
    /// The name of a stored file without the last identifier in its base name: "report{GUID}.txt" gives
    /// "report.txt". In the braces stand 32 hexadecimal digits in groups of 8-4-4-4-12, or the 23 characters of
    /// an SGUID; braces around anything else stay. A "{" in the base name that is never closed is reported by
    /// assertion, and the name comes back as it is.
    static SAnsiString GetOriginalFilename(const SAnsiString& name);

  private:
    SAnsiString compose() const;
    friend TARN_API SAnsiString& operator<<(SAnsiString& out, const FRSUrl& url);

    SAnsiString dir_;
    SAnsiString filename_;
};

/// Appends what MakeURL gives.
TARN_API SAnsiString& operator<<(SAnsiString& out, const FRSUrl& url);

}  // namespace TarnLibA500
