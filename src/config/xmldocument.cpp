#include "config/xmldocument.h"

#include <memory>
#include <new>

#include "strings/memory.h"
#include "system/systemtext.h"
#include "tarnlib/simplebuffer.h"
#include "tarnlib/sstringconv.h"

#include <xercesc/framework/MemBufInputSource.hpp>
#include <xercesc/sax/Locator.hpp>
#include <xercesc/sax/SAXParseException.hpp>
#include <xercesc/sax2/Attributes.hpp>
#include <xercesc/sax2/DefaultHandler.hpp>
#include <xercesc/sax2/SAX2XMLReader.hpp>
#include <xercesc/sax2/XMLReaderFactory.hpp>
#include <xercesc/util/OutOfMemoryException.hpp>
#include <xercesc/util/PlatformUtils.hpp>
#include <xercesc/util/XMLUni.hpp>

namespace TarnLibA500 {
namespace {

namespace xml = XERCES_CPP_NAMESPACE;

static_assert(sizeof(XMLCh) == sizeof(wchar_t));

SAnsiString FromXml(const XMLCh* text) {
    return text != nullptr ? FromSystem(reinterpret_cast<const wchar_t*>(text)) : SAnsiString();
}

// The parser's own data: made for the first document, which takes a while, and kept until the library is
// unloaded.
class ParserData {
  public:
    static void Require() { static const ParserData data; }
    ParserData(const ParserData&) = delete;
    ParserData& operator=(const ParserData&) = delete;

  private:
    ParserData() { xml::XMLPlatformUtils::Initialize(); }
    ~ParserData() { xml::XMLPlatformUtils::Terminate(); }
};

class Element final : public XmlElement {
  public:
    Element(const XMLCh* name, const xml::Attributes& attributes) : name_(name), attributes_(attributes) {}
    SAnsiString name() const override { return FromXml(name_); }
    SAnsiString attribute(const char* name) const override {
        SWCharString wide;
        wide.fromAscii(name);
        return FromXml(attributes_.getValue(reinterpret_cast<const XMLCh*>(wide.getString())));
    }

  private:
    const XMLCh* name_;
    const xml::Attributes& attributes_;
};

SAnsiString Place(XMLFileLoc line, XMLFileLoc column) {
    return "line " + SStringConv::ToString(line) + ", column " + SStringConv::ToString(column) + ": ";
}

// What is wrong with a document, as we see it, and where. The place is taken when it is thrown: when it is
// caught, the parser has let go of the document.
struct Refusal {
    SAnsiString problem;
};

class Handler final : public xml::DefaultHandler {
  public:
    Handler(const XmlLimits& limits, XmlReceiver& receiver) : limits_(limits), receiver_(receiver) {}

    void setDocumentLocator(const xml::Locator* locator) override { locator_ = locator; }

    void startDTD(const XMLCh* /*name*/, const XMLCh* /*publicId*/, const XMLCh* /*systemId*/) override {
        refuse("a document type declaration is not allowed");
    }

    void startElement(const XMLCh* /*uri*/, const XMLCh* /*localName*/, const XMLCh* name,
                      const xml::Attributes& attributes) override {
        items_ += 1 + attributes.getLength();
        if (items_ > limits_.items) refuse("too many elements and attributes");
        if (++depth_ > limits_.depth) refuse("elements are nested too deeply");
        receiver_.startElement(Element(name, attributes));
    }

    void endElement(const XMLCh* /*uri*/, const XMLCh* /*localName*/, const XMLCh* /*name*/) override {
        --depth_;
        receiver_.endElement();
    }

    void error(const xml::SAXParseException& problem) override { throw problem; }

  private:
    [[noreturn]] void refuse(const char* why) const {
        const bool isPlaced = locator_ != nullptr;
        const SAnsiString place =
            isPlaced ? Place(locator_->getLineNumber(), locator_->getColumnNumber()) : SAnsiString();
        throw Refusal{place + why};
    }

    const XmlLimits& limits_;
    XmlReceiver& receiver_;
    const xml::Locator* locator_ = nullptr;
    unsigned depth_ = 0;
    XMLSize_t items_ = 0;
};

std::unique_ptr<xml::SAX2XMLReader> MakeReader(Handler& handler) {
    std::unique_ptr<xml::SAX2XMLReader> reader(xml::XMLReaderFactory::createXMLReader());
    reader->setFeature(xml::XMLUni::fgSAX2CoreNameSpaces, false);
    reader->setFeature(xml::XMLUni::fgSAX2CoreValidation, false);
    // The declaration is refused before any of this matters; off all the same.
    reader->setFeature(xml::XMLUni::fgXercesLoadExternalDTD, false);
    reader->setFeature(xml::XMLUni::fgXercesDisableDefaultEntityResolution, true);
    reader->setContentHandler(&handler);
    reader->setErrorHandler(&handler);
    reader->setLexicalHandler(&handler);
    return reader;
}

void Parse(const SSimpleBuffer& bytes, Handler& handler) {
    ParserData::Require();
    const std::unique_ptr<xml::SAX2XMLReader> reader = MakeReader(handler);
    const xml::MemBufInputSource source(bytes.getBufferProtected(), bytes.getNBytes(), u"landscape", false);
    reader->parse(source);
}

// Empty when all went well.
SAnsiString ProblemOf(const SSimpleBuffer& bytes, Handler& handler) try {
    Parse(bytes, handler);
    return SAnsiString();
} catch (const Refusal& refusal) {
    return refusal.problem;
} catch (const xml::SAXParseException& problem) {
    return Place(problem.getLineNumber(), problem.getColumnNumber()) + FromXml(problem.getMessage());
} catch (const xml::SAXException& problem) {
    return FromXml(problem.getMessage());
} catch (const xml::XMLException& problem) {
    return FromXml(problem.getMessage());
} catch (const xml::OutOfMemoryException&) {
    throw BadAllocation();
}

}  // namespace

bool ReadXmlFile(const SAnsiString& path, const XmlLimits& limits, XmlReceiver& receiver,
                 SAnsiString& problem) {
    SSimpleBuffer bytes;
    if (!bytes.loadFromFileEx(path, false, true, 0, limits.bytes + 1)) {
        problem = "the file is empty or cannot be read";
        return false;
    }
    if (bytes.getNBytes() > limits.bytes) {
        problem = "the file is too large";
        return false;
    }
    Handler handler(limits, receiver);
    problem = ProblemOf(bytes, handler);
    return problem.isEmpty();
}

}  // namespace TarnLibA500
