#include "platform/xml.h"

#include <libxml/parser.h>
#include <libxml/parserInternals.h>
#include <libxml/tree.h>
#include <libxml/xmlerror.h>
#include <libxml/xmlsave.h>
#include <libxml/xmlschemas.h>

#include <cerrno>
#include <cstring>
#include <fstream>

#include "platform/text.h"
#include "platform/textfile.h"

namespace tessaly::platform::xml {

namespace {

const xmlChar* X(const std::string& s) { return reinterpret_cast<const xmlChar*>(s.c_str()); }
const char* C(const xmlChar* s) { return reinterpret_cast<const char*>(s); }

// The folder whose files a schema being read may include; empty outside a validation.
// Every other outside resource (an external entity, an external DTD, a file or network
// address named in a document) is refused, so a project file from elsewhere cannot make
// the program read the user's files or reach the network.
thread_local std::string schema_folder;

xmlParserInputPtr RefusingEntityLoader(const char* url, const char* id, xmlParserCtxtPtr ctxt) {
  (void)id;
  if (url && !schema_folder.empty()) {
    std::string u(url);
    if (u.rfind("file://", 0) == 0) u.erase(0, 7);
    std::error_code ec;
    auto real = std::filesystem::weakly_canonical(u, ec);
    if (!ec && real.string().rfind(schema_folder, 0) == 0 && IsReadableFile(real)) {
      return xmlNewInputFromFile(ctxt, real.c_str());
    }
  }
  return nullptr;
}

void EnsureInit() {
  static const bool done = [] {
    xmlInitParser();
    xmlSetExternalEntityLoader(&RefusingEntityLoader);
    return true;
  }();
  (void)done;
}

// Takes a libxml2-allocated string.
std::string Owned(xmlChar* s) {
  if (!s) return {};
  std::string out(C(s));
  xmlFree(s);
  return out;
}

// Splits "p:name" into prefix and local part; no prefix gives an empty prefix.
std::pair<std::string, std::string> SplitQName(std::string_view name) {
  auto colon = name.find(':');
  if (colon == std::string_view::npos) return {"", std::string(name)};
  return {std::string(name.substr(0, colon)), std::string(name.substr(colon + 1))};
}

bool IsChildKind(xmlNodePtr n) {
  switch (n->type) {
    case XML_ELEMENT_NODE:
    case XML_COMMENT_NODE:
    case XML_PI_NODE:
    case XML_CDATA_SECTION_NODE: return true;
    case XML_TEXT_NODE: return !xmlIsBlankNode(n);
    default: return false;
  }
}

std::string QualifiedName(xmlNodePtr n) {
  std::string local = n->name ? C(n->name) : "";
  if (n->ns && n->ns->prefix) return std::string(C(n->ns->prefix)) + ":" + local;
  return local;
}

// Collects the first error that libxml2 reports while a parse or validation runs.
struct ErrorCapture {
  std::string message;
  int line = 0;
  int column = 0;
  bool seen = false;

  static void Handler(void* self, xmlErrorPtr error) {
    auto* cap = static_cast<ErrorCapture*>(self);
    if (!error || cap->seen || error->level < XML_ERR_ERROR) return;
    cap->seen = true;
    cap->message = TrimEnd(error->message ? error->message : "unknown XML error", " \r\n");
    cap->line = error->line;
    cap->column = error->int2;
  }
};

// Routes libxml2's structured errors to a capture for the lifetime of the guard.
class GlobalErrorGuard {
 public:
  explicit GlobalErrorGuard(ErrorCapture* cap)
      : old_handler_(xmlStructuredError), old_context_(xmlStructuredErrorContext) {
    xmlSetStructuredErrorFunc(cap, &ErrorCapture::Handler);
  }
  ~GlobalErrorGuard() { xmlSetStructuredErrorFunc(old_context_, old_handler_); }
  GlobalErrorGuard(const GlobalErrorGuard&) = delete;
  GlobalErrorGuard& operator=(const GlobalErrorGuard&) = delete;

 private:
  xmlStructuredErrorFunc old_handler_;
  void* old_context_;
};

constexpr int kParseOptions = XML_PARSE_NOBLANKS | XML_PARSE_NONET | XML_PARSE_NOERROR |
                              XML_PARSE_NOWARNING;

ParseResult Finish(xmlDocPtr doc, const ErrorCapture& cap) {
  ParseResult result;
  // No file of the system declares entities. A document that does is refused whole: an
  // entity naming an outside file would be read when its text is asked for, and nested
  // internal entities can grow a small file into gigabytes.
  if (doc && !cap.seen && ((doc->intSubset && doc->intSubset->entities) ||
                           (doc->extSubset && doc->extSubset->entities))) {
    xmlFreeDoc(doc);
    result.reason = "The document declares entities, which are not read.";
    return result;
  }
  if (doc && !cap.seen) {
    result.document.emplace(doc);
    return result;
  }
  if (doc) xmlFreeDoc(doc);
  result.reason = cap.seen ? cap.message : "The document could not be read.";
  result.line = cap.line;
  result.column = cap.column;
  return result;
}

}  // namespace

// ---- Node ----

NodeKind Node::Kind() const {
  switch (node_->type) {
    case XML_ELEMENT_NODE: return NodeKind::Element;
    case XML_TEXT_NODE: return NodeKind::Text;
    case XML_CDATA_SECTION_NODE: return NodeKind::CData;
    case XML_COMMENT_NODE: return NodeKind::Comment;
    case XML_PI_NODE: return NodeKind::ProcessingInstruction;
    default: return NodeKind::Other;
  }
}

std::string Node::Name() const {
  if (!node_) return {};
  switch (node_->type) {
    case XML_ELEMENT_NODE: return QualifiedName(node_);
    case XML_TEXT_NODE: return "#text";
    case XML_CDATA_SECTION_NODE: return "#cdata-section";
    case XML_COMMENT_NODE: return "#comment";
    default: return node_->name ? C(node_->name) : "";
  }
}

std::string Node::Text() const {
  if (!node_) return {};
  return Owned(xmlNodeGetContent(node_));
}

void Node::SetText(std::string_view text) {
  if (!node_) return;
  if (node_->type == XML_ELEMENT_NODE) {
    xmlNodeSetContent(node_, nullptr);  // drops the children
    std::string t(text);
    xmlNodeAddContentLen(node_, X(t), static_cast<int>(t.size()));
  } else {
    std::string t(text);
    xmlNodeSetContentLen(node_, X(t), static_cast<int>(t.size()));
  }
}

std::optional<std::string> Node::Attribute(std::string_view name) const {
  if (!node_ || node_->type != XML_ELEMENT_NODE) return std::nullopt;
  auto [prefix, local] = SplitQName(name);
  if (name == "xmlns" || prefix == "xmlns") {
    std::string want = name == "xmlns" ? "" : local;
    for (xmlNsPtr ns = node_->nsDef; ns; ns = ns->next) {
      std::string p = ns->prefix ? C(ns->prefix) : "";
      if (p == want) return std::string(ns->href ? C(ns->href) : "");
    }
    // A document built in memory may carry the declaration as a plain attribute.
  }
  for (xmlAttrPtr a = node_->properties; a; a = a->next) {
    std::string aname = C(a->name);
    bool match = false;
    if (a->ns && a->ns->prefix) {
      match = !prefix.empty() && aname == local && prefix == C(a->ns->prefix);
    } else {
      match = aname == std::string(name);
    }
    if (match) return Owned(xmlNodeGetContent(reinterpret_cast<xmlNodePtr>(a)));
  }
  return std::nullopt;
}

void Node::SetAttribute(std::string_view name, std::string_view value) {
  if (!node_ || node_->type != XML_ELEMENT_NODE) return;
  auto [prefix, local] = SplitQName(name);
  std::string v(value);
  if (name == "xmlns" || prefix == "xmlns") {
    std::string p = name == "xmlns" ? "" : local;
    xmlNsPtr found = nullptr;
    for (xmlNsPtr ns = node_->nsDef; ns; ns = ns->next) {
      std::string have = ns->prefix ? C(ns->prefix) : "";
      if (have == p) found = ns;
    }
    if (found) {
      if (found->href) xmlFree(const_cast<xmlChar*>(found->href));
      found->href = xmlStrdup(X(v));
    } else {
      found = xmlNewNs(node_, X(v), p.empty() ? nullptr : X(p));
    }
    // An element created before its own prefix was declared ("xs:schema" declaring
    // xmlns:xs) is bound now, so the tree in memory means what its text says.
    if (found && !node_->ns) {
      auto [eprefix, elocal] = SplitQName(C(node_->name));
      if (eprefix == p && (!p.empty() || eprefix.empty())) {
        xmlSetNs(node_, found);
        if (!p.empty()) xmlNodeSetName(node_, X(elocal));
      }
    }
    return;
  }
  if (!prefix.empty()) {
    if (xmlNsPtr ns = xmlSearchNs(node_->doc, node_, X(prefix))) {
      xmlSetNsProp(node_, ns, X(local), X(v));
      return;
    }
  }
  std::string n(name);
  xmlSetProp(node_, X(n), X(v));
}

std::vector<Node> Node::Children() const {
  std::vector<Node> out;
  if (!node_) return out;
  for (xmlNodePtr c = node_->children; c; c = c->next)
    if (IsChildKind(c)) out.emplace_back(c);
  return out;
}

std::vector<Node> Node::ChildElements() const {
  std::vector<Node> out;
  if (!node_) return out;
  for (xmlNodePtr c = node_->children; c; c = c->next)
    if (c->type == XML_ELEMENT_NODE) out.emplace_back(c);
  return out;
}

Node Node::Child(size_t index) const {
  if (!node_) return Node();
  size_t i = 0;
  for (xmlNodePtr c = node_->children; c; c = c->next) {
    if (!IsChildKind(c)) continue;
    if (i++ == index) return Node(c);
  }
  return Node();
}

Node Node::FirstChildElement(std::string_view name) const {
  if (!node_) return Node();
  for (xmlNodePtr c = node_->children; c; c = c->next)
    if (c->type == XML_ELEMENT_NODE && QualifiedName(c) == name) return Node(c);
  return Node();
}

namespace {
void CollectByName(xmlNodePtr n, std::string_view name, std::vector<Node>& out) {
  for (xmlNodePtr c = n->children; c; c = c->next) {
    if (c->type != XML_ELEMENT_NODE) continue;
    if (QualifiedName(c) == name) out.emplace_back(c);
    CollectByName(c, name, out);
  }
}
}  // namespace

std::vector<Node> Node::ElementsByTagName(std::string_view name) const {
  std::vector<Node> out;
  if (node_) CollectByName(node_, name, out);
  return out;
}

Node Node::Parent() const {
  if (!node_ || !node_->parent || node_->parent->type != XML_ELEMENT_NODE) return Node();
  return Node(node_->parent);
}

Node Node::AppendElement(std::string_view name, std::string_view text) {
  if (!node_) return Node();
  auto [prefix, local] = SplitQName(name);
  xmlNsPtr ns = xmlSearchNs(node_->doc, node_, prefix.empty() ? nullptr : X(prefix));
  std::string n(name);
  xmlNodePtr child = ns ? xmlNewDocNode(node_->doc, ns, X(local), nullptr)
                        : xmlNewDocNode(node_->doc, nullptr, X(n), nullptr);
  xmlAddChild(node_, child);
  Node added(child);
  if (!text.empty()) added.SetText(text);
  return added;
}

Node Node::AppendComment(std::string_view text) {
  if (!node_) return Node();
  std::string t(text);
  xmlNodePtr c = xmlNewDocComment(node_->doc, X(t));
  xmlAddChild(node_, c);
  return Node(c);
}

Node Node::AppendText(std::string_view text) {
  if (!node_) return Node();
  std::string t(text);
  xmlNodePtr c = xmlNewDocTextLen(node_->doc, X(t), static_cast<int>(t.size()));
  // xmlAddChild would merge adjacent text nodes and free ours; that is fine for content
  // but the handle must then point at the merged node.
  xmlNodePtr last = node_->last;
  xmlNodePtr added = xmlAddChild(node_, c);
  return Node(added ? added : last);
}

// ---- Document ----

void Document::Free::operator()(_xmlDoc* doc) const {
  if (doc) xmlFreeDoc(doc);
}

Document::Document() {
  EnsureInit();
  doc_.reset(xmlNewDoc(BAD_CAST "1.0"));
}

Document::Document(_xmlDoc* doc) : doc_(doc) { EnsureInit(); }
Document::~Document() = default;
Document::Document(Document&&) noexcept = default;
Document& Document::operator=(Document&&) noexcept = default;

Node Document::Root() const { return Node(xmlDocGetRootElement(doc_.get())); }

Node Document::SetRoot(std::string_view name) {
  std::string n(name);
  xmlNodePtr root = xmlNewDocNode(doc_.get(), nullptr, X(n), nullptr);
  xmlNodePtr old = xmlDocSetRootElement(doc_.get(), root);
  if (old) xmlFreeNode(old);
  return Node(root);
}

Node Document::AppendComment(std::string_view text) {
  std::string t(text);
  xmlNodePtr c = xmlNewDocComment(doc_.get(), X(t));
  xmlAddChild(reinterpret_cast<xmlNodePtr>(doc_.get()), c);
  return Node(c);
}

Node Document::AppendProcessingInstruction(std::string_view target, std::string_view data) {
  std::string t(target), d(data);
  if (t == "xml" || t == "XML") {
    declaration_ = d;
    return Node();
  }
  xmlNodePtr pi = xmlNewDocPI(doc_.get(), X(t), X(d));
  xmlAddChild(reinterpret_cast<xmlNodePtr>(doc_.get()), pi);
  return Node(pi);
}

std::vector<Node> Document::Children() const {
  std::vector<Node> out;
  if (!doc_) return out;
  for (xmlNodePtr c = doc_->children; c; c = c->next)
    if (IsChildKind(c)) out.emplace_back(c);
  return out;
}

namespace {
bool Serialise(xmlDocPtr doc, const std::string& declaration, const SaveOptions& options,
               std::string& out, std::string& reason) {
  EnsureInit();
  ErrorCapture cap;  // keeps libxml2's own complaints off standard error
  GlobalErrorGuard guard(&cap);
  xmlBufferPtr buf = xmlBufferCreate();
  int flags = XML_SAVE_NO_DECL | (options.indent ? XML_SAVE_FORMAT : 0);
  xmlSaveCtxtPtr save = xmlSaveToBuffer(buf, options.encoding.c_str(), flags);
  if (!save) {
    xmlBufferFree(buf);
    reason = "unknown encoding \"" + options.encoding + "\"";
    return false;
  }
  long rc = xmlSaveDoc(save, doc);
  xmlSaveClose(save);
  if (rc < 0) {
    xmlBufferFree(buf);
    reason = "the document could not be serialised";
    return false;
  }
  std::string body(C(xmlBufferContent(buf)), static_cast<size_t>(xmlBufferLength(buf)));
  xmlBufferFree(buf);

  std::string text;
  if (options.declaration) {
    std::string decl = declaration.empty()
                           ? "version=\"1.0\" encoding=\"" + options.encoding + "\""
                           : declaration;
    text = "<?xml " + decl + "?>\n";
  }
  text += body;
  if (!options.crlf) {
    out = std::move(text);
    return true;
  }
  out.clear();
  out.reserve(text.size() + text.size() / 16);
  for (char c : text) {
    if (c == '\n') out.push_back('\r');
    out.push_back(c);
  }
  return true;
}
}  // namespace

std::string Document::ToString(const SaveOptions& options) const {
  std::string out, reason;
  Serialise(doc_.get(), declaration_, options, out, reason);
  return out;
}

bool Document::Save(const std::filesystem::path& path, const SaveOptions& options,
                    std::string* reason) const {
  std::string out, why;
  if (!Serialise(doc_.get(), declaration_, options, out, why)) {
    if (reason) *reason = why;
    return false;
  }
  // Through a temporary file and a rename: a failed save leaves the old file whole.
  return WriteWholeFile(path, out, reason);
}

// ---- Parsing and validation ----

std::string ParseResult::Describe() const {
  if (line <= 0) return reason;
  std::string where = "line " + std::to_string(line);
  if (column > 0) where += ", column " + std::to_string(column);
  return reason + " (" + where + ")";
}

ParseResult ParseFile(const std::filesystem::path& path) {
  EnsureInit();
  std::error_code ec;
  if (!std::filesystem::is_regular_file(path, ec)) {
    ParseResult r;
    r.reason = "The file cannot be found: " + path.string();
    return r;
  }
  // Read through the bounded reader: a link to a device or a pipe is never parsed.
  auto bytes = ReadWholeFile(path);
  if (!bytes) {
    ParseResult r;
    r.reason = "The file cannot be read: " + path.string();
    return r;
  }
  ErrorCapture cap;
  xmlDocPtr doc;
  {
    GlobalErrorGuard guard(&cap);
    doc = xmlReadMemory(bytes->data(), static_cast<int>(bytes->size()), path.c_str(), nullptr,
                        kParseOptions);
  }
  return Finish(doc, cap);
}

ParseResult ParseString(std::string_view text) {
  EnsureInit();
  ErrorCapture cap;
  xmlDocPtr doc;
  {
    GlobalErrorGuard guard(&cap);
    doc = xmlReadMemory(text.data(), static_cast<int>(text.size()), "string", nullptr,
                        kParseOptions);
  }
  return Finish(doc, cap);
}

ValidationResult ValidateAgainstSchema(const Document& document,
                                       const std::filesystem::path& xsd_path) {
  EnsureInit();
  ValidationResult result;
  std::error_code ec;
  if (!std::filesystem::is_regular_file(xsd_path, ec)) {
    result.reason = "The schema file cannot be found: " + xsd_path.string();
    return result;
  }
  ErrorCapture cap;
  GlobalErrorGuard guard(&cap);
  struct SchemaFolder {
    explicit SchemaFolder(const std::filesystem::path& xsd) {
      std::error_code e;
      schema_folder = std::filesystem::weakly_canonical(xsd, e).parent_path().string();
    }
    ~SchemaFolder() { schema_folder.clear(); }
  } allow(xsd_path);
  xmlSchemaParserCtxtPtr pctxt = xmlSchemaNewParserCtxt(xsd_path.c_str());
  xmlSchemaSetParserStructuredErrors(pctxt, &ErrorCapture::Handler, &cap);
  xmlSchemaPtr schema = xmlSchemaParse(pctxt);
  xmlSchemaFreeParserCtxt(pctxt);
  if (!schema) {
    result.reason = "The schema " + xsd_path.filename().string() + " is not valid: " +
                    (cap.seen ? cap.message : std::string("unreadable"));
    result.line = cap.line;
    return result;
  }
  xmlSchemaValidCtxtPtr vctxt = xmlSchemaNewValidCtxt(schema);
  xmlSchemaSetValidStructuredErrors(vctxt, &ErrorCapture::Handler, &cap);
  int rc = xmlSchemaValidateDoc(vctxt, document.raw());
  xmlSchemaFreeValidCtxt(vctxt);
  xmlSchemaFree(schema);
  if (rc == 0) {
    result.valid = true;
    return result;
  }
  result.reason = cap.seen ? cap.message : "The document does not match its schema.";
  result.line = cap.line;
  return result;
}

}  // namespace tessaly::platform::xml
