// The file as the service's reader gets it: the same size limit, parser options and refusals, with
// libxml2's own diagnostics and the schema's turned into findings.

#include <fcntl.h>
#include <libxml/SAX2.h>
#include <libxml/parser.h>
#include <libxml/parserInternals.h>
#include <libxml/xmlschemas.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

#include "config_check_parts.h"
#include "input_text.h"

namespace Tarvo::Emu::ConfigCheckParts {
namespace {
constexpr off_t SIZE_LIMIT = 1024 * 1024;
constexpr int PARSE_OPTIONS = XML_PARSE_NOBLANKS | XML_PARSE_NONET;
constexpr const char* LOAD_ERROR = "[ZelConfig] load xml error!";
// libxml2's messages may quote a whole value.
constexpr size_t SHOWN_MESSAGE_CHARS = 400;

struct Diagnostics {
    Findings* findings = nullptr;
    // Set at a document type declaration: the parse stops there, and what it says after is noise.
    bool stopped = false;
    long doctypeLine = 0;
};

std::string Kind(const xmlError& error)
{
    if (error.domain == XML_FROM_SCHEMASV) {
        return "schema: ";
    }
    if (error.domain == XML_FROM_SCHEMASP) {
        return "schema file: ";
    }
    return error.level == XML_ERR_WARNING ? "xml warning: " : "xml error: ";
}

void Collect(void* context, xmlErrorPtr error)
{
    auto* diagnostics = static_cast<Diagnostics*>(context);
    if (error == nullptr || diagnostics->stopped) {
        return;
    }
    std::string message = error->message != nullptr ? error->message : "";
    while (!message.empty() && (message.back() == '\n' || message.back() == '\r')) {
        message.pop_back();
    }
    diagnostics->findings->push_back({error->line, Kind(*error) + Shown(message, SHOWN_MESSAGE_CHARS)});
}

// The parser hands its own context to its handlers; the diagnostics hang from it.
void CollectFromParser(void* parser, xmlErrorPtr error)
{
    Collect(static_cast<xmlParserCtxtPtr>(parser)->_private, error);
}

void StopAtDoctype(void* parser, const xmlChar* /* name */, const xmlChar* /* publicId */,
                   const xmlChar* /* systemId */)
{
    auto* ctxt = static_cast<xmlParserCtxtPtr>(parser);
    auto* diagnostics = static_cast<Diagnostics*>(ctxt->_private);
    diagnostics->doctypeLine = ctxt->input != nullptr ? ctxt->input->line : 0;
    diagnostics->stopped = true;
    xmlStopParser(ctxt);
}

// libxml2 gives a CDATA section no line; it gets the one it ends on, as texts and comments have.
void CdataWithLine(void* parser, const xmlChar* value, int length)
{
    auto* ctxt = static_cast<xmlParserCtxtPtr>(parser);
    xmlSAX2CDataBlock(parser, value, length);
    xmlNodePtr last = ctxt->node != nullptr ? ctxt->node->last : nullptr;
    if (last != nullptr && last->type == XML_CDATA_SECTION_NODE && last->line == 0 && ctxt->input != nullptr) {
        last->line = static_cast<unsigned short>(std::clamp(ctxt->input->line, 0, 65535));
    }
}

// Whatever libxml2 reports outside the handlers set below (the schema file's own parse) lands in
// the findings too, never on stderr.
class RoutedErrors {
public:
    explicit RoutedErrors(Diagnostics* diagnostics) : handler_(xmlStructuredError), context_(xmlStructuredErrorContext)
    {
        xmlSetStructuredErrorFunc(diagnostics, Collect);
    }
    ~RoutedErrors() { xmlSetStructuredErrorFunc(context_, handler_); }
    RoutedErrors(const RoutedErrors&) = delete;
    RoutedErrors& operator=(const RoutedErrors&) = delete;

private:
    xmlStructuredErrorFunc handler_;
    void* context_;
};

void Refuse(Findings* findings, long line, const std::string& why, const std::string& logged = LOAD_ERROR)
{
    findings->push_back({line, "rejected: " + why + " " + Logs(logged)});
}

// The service's read: a regular file of 1 MiB at most (a FIFO or device is never read), taken up
// to the size it had.
bool ReadBounded(const std::string& path, std::string* content, Findings* findings)
{
    const int fd = open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
    if (fd < 0) {
        Refuse(findings, 0, std::string("cannot open the file: ") + std::strerror(errno));
        return false;
    }
    struct stat info {};
    const bool regular = fstat(fd, &info) == 0 && S_ISREG(info.st_mode);
    const bool fits = regular && info.st_size <= SIZE_LIMIT;
    if (fits) {
        content->resize(static_cast<size_t>(info.st_size));
        size_t done = 0;
        while (done < content->size()) {
            const ssize_t got = read(fd, content->data() + done, content->size() - done);
            if (got > 0) {
                done += static_cast<size_t>(got);
            } else if (got == 0 || errno != EINTR) {
                break;
            }
        }
        content->resize(done);
    }
    close(fd);
    if (!regular) {
        Refuse(findings, 0, "not a regular file");
    } else if (!fits) {
        const std::string limit = std::to_string(SIZE_LIMIT);
        Refuse(findings, 0, std::to_string(info.st_size) + " bytes, over the limit of " + limit,
               "[ZelConfig] config file is bigger than " + limit + " bytes");
    }
    return fits;
}

xmlDocPtr Parse(const std::string& content, Findings* findings)
{
    Diagnostics diagnostics{findings};
    RoutedErrors routed(&diagnostics);
    xmlParserCtxtPtr ctxt = xmlCreateMemoryParserCtxt(content.data(), static_cast<int>(content.size()));
    if (ctxt == nullptr) {
        Refuse(findings, 0, content.empty() ? "the file is empty" : "libxml2 cannot take it");
        return nullptr;
    }
    (void)xmlCtxtUseOptions(ctxt, PARSE_OPTIONS);
    ctxt->_private = &diagnostics;
    ctxt->sax->serror = CollectFromParser;
    // Refused before its subset is read, so no declaration in it costs anything.
    ctxt->sax->internalSubset = StopAtDoctype;
    ctxt->sax->cdataBlock = CdataWithLine;
    (void)xmlParseDocument(ctxt);
    xmlDocPtr doc = ctxt->wellFormed != 0 && !diagnostics.stopped ? ctxt->myDoc : nullptr;
    if (doc == nullptr && ctxt->myDoc != nullptr) {
        xmlFreeDoc(ctxt->myDoc);
    }
    ctxt->myDoc = nullptr;
    xmlFreeParserCtxt(ctxt);
    if (diagnostics.stopped) {
        Refuse(findings, diagnostics.doctypeLine, "a document type declaration",
               "[ZelConfig] config file has a document type declaration");
    } else if (doc == nullptr) {
        Refuse(findings, 0, "not well-formed XML");
    }
    return doc;
}
}  // namespace

xmlDocPtr ParseLikeTheService(const std::string& path, Findings* findings)
{
    xmlInitParser();
    std::string content;
    return ReadBounded(path, &content, findings) ? Parse(content, findings) : nullptr;
}

void ValidateAgainstSchema(xmlDocPtr doc, const std::string& schemaPath, Findings* findings)
{
    Diagnostics diagnostics{findings};
    RoutedErrors routed(&diagnostics);
    xmlSchemaParserCtxtPtr parser = xmlSchemaNewParserCtxt(schemaPath.c_str());
    xmlSchemaPtr schema = nullptr;
    if (parser != nullptr) {
        xmlSchemaSetParserStructuredErrors(parser, Collect, &diagnostics);
        schema = xmlSchemaParse(parser);
        xmlSchemaFreeParserCtxt(parser);
    }
    xmlSchemaValidCtxtPtr validator = schema != nullptr ? xmlSchemaNewValidCtxt(schema) : nullptr;
    if (validator == nullptr) {
        findings->push_back({0, "schema file: cannot use " + Shown(schemaPath) + ", the file is not validated"});
        xmlSchemaFree(schema);
        return;
    }
    xmlSchemaSetValidStructuredErrors(validator, Collect, &diagnostics);
    if (xmlSchemaValidateDoc(validator, doc) == 0) {
        findings->push_back({0, "schema: valid"});
    }
    xmlSchemaFreeValidCtxt(validator);
    xmlSchemaFree(schema);
}

}  // namespace Tarvo::Emu::ConfigCheckParts
