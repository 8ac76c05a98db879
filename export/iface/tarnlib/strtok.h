#pragma once

#include <cstdint>

#include "tarnlib/sstring.h"
#include "tarnlib/tarnapi.h"

/// Tokenizers: they cut a text at a token and hand out the pieces one at a time.
///
/// The token is a whole text and not a set of characters; it is searched by multi-byte characters of the
/// process's code page, and one that begins with a zero byte is never found. Two tokens in a row give an
/// empty piece between them. A tokenizer holds its own copies; an object is used by one thread at a time, its
/// const members included, because they may drop what has been cut off.
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
    /// No text.
    STextRest() = default;
    /// The text, none of it cut off.
    explicit STextRest(const SAnsiString& text) : text_(text) {}

    /// True when nothing is left.
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
    SAnsiString::iterator behind(const SAnsiString& token, SAnsiString::iterator place) const;

    mutable SAnsiString text_;
    mutable std::uint32_t position_ = 0;  // bytes of the text that are cut off
};

/// A tokenizer whose LeftStr and RightStr look without cutting.
class TARN_API SStrTok {
  public:
    /// The same as Set.
    SStrTok(const SAnsiString& string, const SAnsiString& token);
    /// The same as Set.
    SStrTok(const char* string, const char* token);
    /// Lets go of its texts.
    virtual ~SStrTok() = default;
    /// A tokenizer of its own at the same place of the same text.
    SStrTok(const SStrTok&) = default;
    /// Goes to the same place of the same text.
    SStrTok& operator=(const SStrTok&) = default;

    /// SetString and SetToken.
    void Set(const SAnsiString& string, const SAnsiString& token);
    /// SetString and SetToken.
    void Set(const char* string, const char* token);
    /// Sets the text to be cut.
    void SetString(const SAnsiString& string);
    /// Sets the text to be cut; null is reported by assertion and stands for an empty one.
    void SetString(const char* string);
    /// Sets the token; an empty one is reported by assertion and never found.
    void SetToken(const SAnsiString& token);
    /// Sets the token; a null or empty one is reported by assertion and never found.
    void SetToken(const char* token);
    /// Sets a token of one byte; a zero byte is reported by assertion and never found.
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
    /// No text and no token.
    RSStrTok() = default;
    /// The text to be cut; null is an empty one.
    RSStrTok(const char* text);
    /// The text to be cut.
    RSStrTok(const SAnsiString& text);

    /// Sets the text to be cut, null being an empty one; the token stays.
    void Set(const char* text);
    /// Sets the text to be cut; the token stays.
    void Set(const SAnsiString& text);
    /// Sets the token; null is an empty one.
    void SetToken(const char* token);
    /// Sets a token of one byte; a zero byte is an empty one.
    void SetToken(char token);

    /// Cuts off and returns the text before the next token, dropping the token; all that is left when there
    /// is none, and an empty text when nothing is left. Should memory run out, that is reported by assertion.
    SAnsiString Next();
    /// SetToken, then Next.
    SAnsiString Next(char token);
    /// SetToken, then Next.
    SAnsiString Next(const char* token);
    /// The same as Next.
    SAnsiString LeftStr();
    /// SetToken, then Next.
    SAnsiString LeftStr(char token);
    /// SetToken, then Next.
    SAnsiString LeftStr(const char* token);
    /// Cuts off one piece, drops it, and cuts off and returns the one after it.
    SAnsiString RightStr();
    /// SetToken, then RightStr.
    SAnsiString RightStr(char token);
    /// SetToken, then RightStr.
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
