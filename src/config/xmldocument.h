#pragma once

#include <cstdint>

#include "tarnlib/sstring.h"

/// XML documents from files that nobody vouches for, element by element.
namespace TarnLibA500 {

/// What an element says about itself. Texts are in the process's code page; "?" for characters that it does
/// not have.
class XmlElement {
  public:
    virtual SAnsiString name() const = 0;
    /// Empty for an attribute that is not there.
    virtual SAnsiString attribute(const char* name) const = 0;

  protected:
    ~XmlElement() = default;
};

class XmlReceiver {
  public:
    virtual void startElement(const XmlElement& element) = 0;
    virtual void endElement() = 0;

  protected:
    ~XmlReceiver() = default;
};

/// A document that is larger than this is refused.
struct XmlLimits {
    std::uint32_t bytes = 8 * 1024 * 1024;  ///< the parser takes up to 25 times as much memory
    unsigned depth = 64;
    unsigned items = 1'000'000;  ///< elements and attributes
    unsigned names = 1'000;      ///< different names of elements: the parser's table of them can be made slow
    /// Of one tag, comment or the like, and not exactly: the parser has read it all before it tells of it.
    std::uint32_t itemBytes = 64 * 1024;
};

/// Hands on the elements of an XML document in a file. False, with the reason and the place, when it
/// cannot be read to its end, is not well-formed, passes a limit or has a document type declaration: without
/// one there are no entities, neither nested nor external. The receiver may have got elements then.
bool ReadXmlFile(const SAnsiString& path, const XmlLimits& limits, XmlReceiver& receiver,
                 SAnsiString& problem);

}  // namespace TarnLibA500
