#pragma once

#include <cstdint>

#include "tarnlib/sstring.h"
#include "tarnlib/tarnapi.h"

/// Tokenizers: they cut a text at a token and hand out the pieces one at a time.
///
/// The token is a whole text and not a set of characters; it is searched by multi-byte characters of the
/// process's code page. Two tokens in a row give an empty piece between them. A tokenizer holds its own
/// copies; an object is used by one thread at a time, its const members included, because they may drop what
/// has been cut off.
///
///     RSStrTok pairs("user=anna; mode=passive");
///     while (!pairs.IsEmpty()) {
///         RSStrTok pair(pairs.Next("; "));
///         SAnsiString name = pair.Next('=');      // user, then mode
///         SAnsiString value = pair.rest();        // anna, then passive
///     }
namespace TarnLibA500 {

/// A text that gets shorter from its start; both tokenizers stand on it. Taking all pieces costs time in
/// proportion to the text, because what has been cut off is only dropped when somebody looks at the rest.
class TARN_API STextRest {
  public:
    STextRest() = default;
    explicit STextRest(const SAnsiString& text) : text_(text) {}

    bool isEmpty() const noexcept { return position_ == text_.getLength(); }
    /// The text that is left. Valid until the next change.
    const SAnsiString& get() const;
    /// The text before the token, or all of it when there is no token or the token is empty. Nothing is cut
    /// off.
    SAnsiString before(const SAnsiString& token) const;
    /// The text after the token; empty when there is none. Nothing is cut off.
    SAnsiString after(const SAnsiString& token) const;
    /// Stores before(token) in the piece and keeps after(token). Should memory run out, the piece may be
    /// there while the text stays whole.
    void cut(const SAnsiString& token, SAnsiString& piece);

  private:
    SAnsiString::iterator start() const noexcept;
    SAnsiString::iterator find(const SAnsiString& token) const;

    mutable SAnsiString text_;
    mutable std::uint32_t position_ = 0;  // bytes of the text that are cut off
};

/// A tokenizer whose LeftStr and RightStr look without cutting.
class TARN_API SStrTok {
  public:
    SStrTok(const SAnsiString& string, const SAnsiString& token);
    SStrTok(const char* string, const char* token);
    virtual ~SStrTok() = default;
    SStrTok(const SStrTok&) = default;
    SStrTok& operator=(const SStrTok&) = default;

    /// Set the text to be cut, the token, or both. A null text is reported by assertion and stands for an
    /// empty one; a null or empty token is too, and is then never found.
    void Set(const SAnsiString& string, const SAnsiString& token);
    void Set(const char* string, const char* token);
    void SetString(const SAnsiString& string);
    void SetString(const char* string);
    void SetToken(const SAnsiString& token);
    void SetToken(const char* token);
    void SetToken(char token);

    /// Cuts off and returns the text before the next token, dropping the token; all that is left when there
    /// is none, and an empty text when nothing is left.
    SAnsiString Next();
    /// The text before the next token (all that is left when there is none); nothing is cut.
    SAnsiString LeftStr() const;
    /// The text after the next token (empty when there is none); nothing is cut.
    SAnsiString RightStr() const;
    /// What is left to be cut.
    SAnsiString GetString() const;
    /// True when nothing is left.
    bool IsEmpty() const;

  private:
    STextRest rest_;
    SAnsiString token_;
};

/// A tokenizer whose token may change from piece to piece. An empty token (there is none at first) is never
/// found.
class TARN_API RSStrTok {
  public:
    RSStrTok() = default;
    /// The text to be cut; null is an empty one.
    RSStrTok(const char* text);
    RSStrTok(const SAnsiString& text);

    /// Sets the text to be cut; the token stays.
    void Set(const char* text);
    void Set(const SAnsiString& text);
    /// Sets the token; null is an empty one.
    void SetToken(const char* token);
    void SetToken(char token);

    /// Cuts off and returns the text before the next token, dropping the token; all that is left when there
    /// is none, and an empty text when nothing is left. Should memory run out, that is reported by assertion.
    /// A token given here becomes the current one.
    SAnsiString Next();
    SAnsiString Next(char token);
    SAnsiString Next(const char* token);
    /// The same as Next.
    SAnsiString LeftStr();
    SAnsiString LeftStr(char token);
    SAnsiString LeftStr(const char* token);
    /// Cuts off one piece, drops it, and cuts off and returns the one after it.
    SAnsiString RightStr();
    SAnsiString RightStr(char token);
    SAnsiString RightStr(const char* token);

    /// What is left to be cut. Valid until the next change.
    const SAnsiString& rest() const;
    /// True when nothing is left.
    bool IsEmpty() const;

  private:
    STextRest rest_;
    SAnsiString token_;
};

}  // namespace TarnLibA500
