#include "config/xmldocument.h"

#include <algorithm>
#include <cstring>
#include <memory>
#include <set>
#include <string>

#include "strings/memory.h"
#include "system/systemtext.h"
#include "tarnlib/simplebuffer.h"
#include "tarnlib/sstringconv.h"

#include <windows.h>

#include <xercesc/sax/InputSource.hpp>
#include <xercesc/sax/Locator.hpp>
#include <xercesc/sax/SAXParseException.hpp>
#include <xercesc/sax2/Attributes.hpp>
#include <xercesc/sax2/DefaultHandler.hpp>
#include <xercesc/sax2/SAX2XMLReader.hpp>
#include <xercesc/sax2/XMLReaderFactory.hpp>
#include <xercesc/util/BinInputStream.hpp>
#include <xercesc/util/OutOfMemoryException.hpp>
#include <xercesc/util/PanicHandler.hpp>
#include <xercesc/util/PlatformUtils.hpp>
#include <xercesc/util/XMLUni.hpp>

extern "C" BOOLEAN NTAPI RtlDllShutdownInProgress();

namespace TarnLibA500 {
namespace {

namespace xml = XERCES_CPP_NAMESPACE;

static_assert(sizeof(XMLCh) == sizeof(wchar_t));

SAnsiString FromXml(const XMLCh* text) {
    return text != nullptr ? FromSystem(reinterpret_cast<const wchar_t*>(text)) : SAnsiString();
}

// What is wrong with a document, as we see it, and where. The place is taken when it is thrown: when it is
// caught, the parser has let go of the document.
struct Refusal {
    SAnsiString problem;
};

// True when the process ends: its other threads are gone then, and one may have held a lock of the heap.
bool IsProcessEnding() {
    return RtlDllShutdownInProgress() != FALSE;
}

// The parser's own data: made for the first document, which takes a while, and kept until the library is
// unloaded. It is a panic handler, because without one the parser ends the process when it cannot be set up.
class ParserData : private xml::PanicHandler {
  public:
    static void Require() { static const ParserData data; }
    ParserData(const ParserData&) = delete;
    ParserData& operator=(const ParserData&) = delete;

  private:
    ParserData() { xml::XMLPlatformUtils::Initialize(xml::XMLUni::fgXercescDefaultLocale, nullptr, this); }
    ~ParserData() override {
        if (!IsProcessEnding()) xml::XMLPlatformUtils::Terminate();
    }
    void panic(PanicReasons reason) override { throw Refusal{getPanicReasonString(reason)}; }
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

class Handler final : public xml::DefaultHandler {
  public:
    Handler(const XmlLimits& limits, XmlReceiver& receiver) : limits_(limits), receiver_(receiver) {}

    void setDocumentLocator(const xml::Locator* locator) override { locator_ = locator; }

    void startDTD(const XMLCh* /*name*/, const XMLCh* /*publicId*/, const XMLCh* /*systemId*/) override {
        refuse("a document type declaration is not allowed");
    }

    void startElement(const XMLCh* /*uri*/, const XMLCh* /*localName*/, const XMLCh* name,
                      const xml::Attributes& attributes) override {
        noteProgress();
        items_ += 1 + attributes.getLength();
        if (items_ > limits_.items) refuse("too many elements and attributes");
        if (names_.emplace(name).second && names_.size() > limits_.names)
            refuse("too many names of elements");
        if (++depth_ > limits_.depth) refuse("elements are nested too deeply");
        receiver_.startElement(Element(name, attributes));
    }

    void endElement(const XMLCh* /*uri*/, const XMLCh* /*localName*/, const XMLCh* /*name*/) override {
        noteProgress();
        --depth_;
        receiver_.endElement();
    }

    void characters(const XMLCh* /*text*/, XMLSize_t /*length*/) override { noteProgress(); }
    void comment(const XMLCh* /*text*/, XMLSize_t /*length*/) override { noteProgress(); }
    void processingInstruction(const XMLCh* /*target*/, const XMLCh* /*data*/) override { noteProgress(); }

    /// The parser is about to read so many bytes of the document.
    void noteRead(XMLSize_t bytes) {
        if (unseenBytes_ > limits_.itemBytes) refuse("a tag or another item is too long");
        unseenBytes_ += bytes;
    }

    void error(const xml::SAXParseException& problem) override { throw problem; }

  private:
    void noteProgress() noexcept { unseenBytes_ = 0; }

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
    XMLSize_t unseenBytes_ = 0;  // read since the parser last told of something
    std::set<std::u16string> names_;
};

// The bytes of a document, as the parser reads them.
class Stream final : public xml::BinInputStream {
  public:
    Stream(const SSimpleBuffer& bytes, Handler& handler) : bytes_(bytes), handler_(handler) {}
    XMLFilePos curPos() const override { return at_; }
    const XMLCh* getContentType() const override { return nullptr; }
    XMLSize_t readBytes(XMLByte* room, const XMLSize_t most) override {
        const XMLSize_t count = std::min<XMLSize_t>(most, bytes_.getNBytes() - at_);
        handler_.noteRead(count);
        if (count != 0) std::memcpy(room, bytes_.getBufferProtected() + at_, count);
        at_ += count;
        return count;
    }

  private:
    const SSimpleBuffer& bytes_;
    Handler& handler_;
    XMLSize_t at_ = 0;
};

class Source final : public xml::InputSource {
  public:
    Source(const SSimpleBuffer& bytes, Handler& handler) : bytes_(bytes), handler_(handler) {}
    /// The parser deletes it.
    xml::BinInputStream* makeStream() const override { return new Stream(bytes_, handler_); }

  private:
    const SSimpleBuffer& bytes_;
    Handler& handler_;
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
    const Source source(bytes, handler);
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
