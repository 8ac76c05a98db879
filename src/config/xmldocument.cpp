#include "config/xmldocument.h"

#include <algorithm>
#include <cstring>
#include <set>
#include <string>
#include <utility>

#include "config/filereason.h"
#include "strings/base/memory.h"
#include "tarnlib/sfile.h"
#include "tarnlib/simplebuffer.h"
#include "tarnlib/sstringconv.h"
#include "waiting/waiting.h"

#include <windows.h>

#include <xercesc/framework/MemoryManager.hpp>
#include <xercesc/parsers/SAX2XMLReaderImpl.hpp>
#include <xercesc/sax/InputSource.hpp>
#include <xercesc/sax/Locator.hpp>
#include <xercesc/sax/SAXParseException.hpp>
#include <xercesc/sax2/Attributes.hpp>
#include <xercesc/sax2/DefaultHandler.hpp>
#include <xercesc/util/BinInputStream.hpp>
#include <xercesc/util/OutOfMemoryException.hpp>
#include <xercesc/util/PanicHandler.hpp>
#include <xercesc/util/PlatformUtils.hpp>
#include <xercesc/util/XMLUni.hpp>

namespace TarnLibA500 {
namespace {

namespace xml = XERCES_CPP_NAMESPACE;

static_assert(sizeof(XMLCh) == sizeof(wchar_t));

// A text, which is no name: by the C locale, as the texts of the other configuration files are.
SAnsiString FromXml(const XMLCh* text) {
    SAnsiString narrow;
    if (text != nullptr) narrow.fromWChar(reinterpret_cast<const wchar_t*>(text));
    return narrow;
}

// What is wrong with a document, as we see it, and where. The place is taken when it is thrown: when it is
// caught, the parser has let go of the document.
struct Refusal {
    SAnsiString problem;
};

// The memory of one document. When an allocation fails, the parser loses hold of some of what it has; here it
// is freed with the rest.
class DocumentMemory final : public xml::MemoryManager {
  public:
    ~DocumentMemory() override {
        while (first_ != nullptr) memory::Free(std::exchange(first_, first_->next));
    }

    void* allocate(XMLSize_t bytes) override {
        const std::uint64_t size = std::uint64_t{bytes} + sizeof(Block);
        void* const room = size <= SIZE_MAX ? osmemory::Allocate(static_cast<std::size_t>(size)) : nullptr;
        if (room == nullptr) throw xml::OutOfMemoryException();
        first_ = new (room) Block{first_, nullptr};
        if (first_->next != nullptr) first_->next->before = first_;
        return first_ + 1;
    }

    void deallocate(void* bytes) override {
        if (bytes == nullptr) return;
        Block* const block = static_cast<Block*>(bytes) - 1;
        (block->before != nullptr ? block->before->next : first_) = block->next;
        if (block->next != nullptr) block->next->before = block->before;
        memory::Free(block);
    }

    /// No exception of the parser outlives the document.
    xml::MemoryManager* getExceptionMemoryManager() override { return this; }

  private:
    /// Stands before each block of the parser's.
    struct alignas(8) Block {
        Block* next;
        Block* before;
    };

    Block* first_ = nullptr;
};

// The parser's own data: made for the first document, which takes a while, and kept until the library is
// unloaded. It is a panic handler, because without one the parser ends the process when it cannot be set up.
// While the process ends, its other threads are gone, and one may have been at it: nothing is made or freed.
class ParserData : private xml::PanicHandler {
  public:
    static void Require() {
        if (waiting::ProcessIsEnding()) throw Refusal{"the process is ending"};
        static const ParserData data;
    }
    ParserData(const ParserData&) = delete;
    ParserData& operator=(const ParserData&) = delete;

  private:
    // It cannot be set up a second time after it failed half-way, so there has to be memory for all of it.
    ParserData() {
        constexpr std::uint64_t kRoomForAll = 1ULL << 20;
        if (isHalfMade) throw Refusal{"the parser could not be set up for lack of memory"};
        memory::Free(memory::Allocate(kRoomForAll));
        isHalfMade = true;
        xml::XMLPlatformUtils::Initialize(xml::XMLUni::fgXercescDefaultLocale, nullptr, this);
        isHalfMade = false;
    }
    ~ParserData() override {
        if (!waiting::ProcessIsEnding()) xml::XMLPlatformUtils::Terminate();
    }
    void panic(PanicReasons reason) override { throw Refusal{getPanicReasonString(reason)}; }

    static inline bool isHalfMade = false;
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

    [[noreturn]] void refuseDocumentType() const { refuse("a document type declaration is not allowed"); }

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

    /// The parser is about to read the next "bytes" bytes of the document.
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
    Source(const SSimpleBuffer& bytes, Handler& handler, xml::MemoryManager* memory)
        : InputSource(memory), bytes_(bytes), handler_(handler) {}
    /// The parser deletes it.
    xml::BinInputStream* makeStream() const override {
        return new (getMemoryManager()) Stream(bytes_, handler_);
    }

  private:
    const SSimpleBuffer& bytes_;
    Handler& handler_;
};

class Reader final : public xml::SAX2XMLReaderImpl {
  public:
    Reader(Handler& handler, xml::MemoryManager* memory) : SAX2XMLReaderImpl(memory), handler_(handler) {
        setFeature(xml::XMLUni::fgSAX2CoreNameSpaces, false);
        setFeature(xml::XMLUni::fgSAX2CoreValidation, false);
        // The declaration is refused before any of this matters; off all the same.
        setFeature(xml::XMLUni::fgXercesLoadExternalDTD, false);
        setFeature(xml::XMLUni::fgXercesDisableDefaultEntityResolution, true);
        setContentHandler(&handler);
        setErrorHandler(&handler);
        setLexicalHandler(&handler);
    }
    // Handlers are not told of a declaration that has nothing but a name.
    void doctypeDecl(const xml::DTDElementDecl& /*root*/, const XMLCh* /*publicId*/,
                     const XMLCh* /*systemId*/, bool /*hasSubset*/, bool /*hasExternalSubset*/) override {
        handler_.refuseDocumentType();
    }

  private:
    Handler& handler_;
};

void Parse(const SSimpleBuffer& bytes, Handler& handler, xml::MemoryManager* memory) {
    ParserData::Require();
    Reader reader(handler, memory);
    reader.parse(Source(bytes, handler, memory));
}

// Empty when all went well.
SAnsiString ProblemOf(const SSimpleBuffer& bytes, Handler& handler, xml::MemoryManager* memory) try {
    Parse(bytes, handler, memory);
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

// A byte more than the limit tells that a file is too large.
SAnsiString ReadBytes(const SAnsiString& path, std::uint32_t limit, SSimpleBuffer& bytes) try {
    SFile file(path, SFile::readOnly | SFile::sequential, SFile::readWriteMask, SFile::denyNothing);
    const auto room = static_cast<std::uint32_t>(std::min<long long>(file.sizeEx(), limit + 1LL));
    if (room > limit) return "the file is too large";
    SSimpleBuffer read(room);
    std::uint32_t done = 0;
    for (int count = -1; count != 0 && done < room; done += static_cast<std::uint32_t>(count))
        count = file.read(read.getBuffer() + done, room - done);
    if (done == 0) return "the file is empty";
    read.releaseBuffer(done);
    bytes = read;
    return SAnsiString();
} catch (const SFileException& failure) {
    return ReasonOf(failure);
}

}  // namespace

bool ReadXmlFile(const SAnsiString& path, const XmlLimits& limits, XmlReceiver& receiver,
                 SAnsiString& problem) {
    SSimpleBuffer bytes;
    problem = ReadBytes(path, limits.bytes, bytes);
    if (!problem.isEmpty()) return false;
    DocumentMemory memory;
    Handler handler(limits, receiver);
    problem = ProblemOf(bytes, handler, &memory);
    return problem.isEmpty();
}

}  // namespace TarnLibA500
