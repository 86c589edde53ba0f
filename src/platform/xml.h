#pragma once
// A small DOM over libxml2, shaped after what the system's XML code needs: parse a file
// or a text and learn why it failed, build a document (declaration, comments, elements,
// attributes, text), walk children by position, save with control over the declaration
// and encoding, and validate against an XSD file.
//
// Nodes are light handles into their Document; they stay valid while the Document lives.
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

struct _xmlDoc;
struct _xmlNode;

namespace tessaly::platform::xml {

enum class NodeKind { Element, Text, CData, Comment, ProcessingInstruction, Other };

class Node {
 public:
  Node() = default;
  explicit Node(_xmlNode* node) : node_(node) {}

  explicit operator bool() const { return node_ != nullptr; }
  NodeKind Kind() const;
  bool IsElement() const { return node_ && Kind() == NodeKind::Element; }

  // Qualified name as written ("xs:element", "Decimals"); "#comment" / "#text" for others.
  std::string Name() const;
  // The text content of the node and all its descendants, as stored (not trimmed).
  std::string Text() const;
  // Replaces the content with literal text (markup characters are escaped on save).
  void SetText(std::string_view text);

  // Attribute by its qualified name ("inputpath", "xsd:noNamespaceSchemaLocation",
  // "xmlns:xsd"); nullopt when absent.
  std::optional<std::string> Attribute(std::string_view name) const;
  // Sets an attribute. "xmlns" / "xmlns:p" declare a namespace; a "p:name" whose prefix
  // is declared in scope becomes a namespaced attribute, otherwise the name is kept as is.
  void SetAttribute(std::string_view name, std::string_view value);

  // Children as a DOM's childNodes gives them: elements, comments, text, CDATA and
  // processing instructions; whitespace-only text between elements is not a child.
  std::vector<Node> Children() const;
  std::vector<Node> ChildElements() const;
  // The child at a position of Children(); an empty Node when out of range.
  Node Child(size_t index) const;
  // The first child element of that qualified name; an empty Node when none.
  Node FirstChildElement(std::string_view name) const;
  // All descendant elements of that qualified name, in document order.
  std::vector<Node> ElementsByTagName(std::string_view name) const;
  Node Parent() const;

  // Appends and returns the new node. A "p:name" element whose prefix is declared in
  // scope is put in that namespace.
  Node AppendElement(std::string_view name, std::string_view text = {});
  Node AppendComment(std::string_view text);
  Node AppendText(std::string_view text);

  _xmlNode* raw() const { return node_; }

 private:
  _xmlNode* node_ = nullptr;
};

struct SaveOptions {
  // Write "<?xml ...?>" first. Its content is the document's declaration (see
  // Document::SetDeclaration), by default: version="1.0" encoding="<encoding>".
  bool declaration = true;
  // The byte encoding of the output; the default declaration names it.
  std::string encoding = "UTF-8";
  // One element per line, nested elements indented by two blanks.
  bool indent = true;
  // Line ends of the output: CR LF (as the system's text files) or LF.
  bool crlf = true;
};

class Document {
 public:
  // A new empty document (no root yet).
  Document();
  // Takes ownership of a libxml2 document.
  explicit Document(_xmlDoc* doc);
  ~Document();
  Document(Document&&) noexcept;
  Document& operator=(Document&&) noexcept;
  Document(const Document&) = delete;
  Document& operator=(const Document&) = delete;

  Node Root() const;
  // Creates the root element (replacing any root) and returns it.
  Node SetRoot(std::string_view name);

  // Document-level nodes, appended in call order: call before SetRoot to put them first.
  Node AppendComment(std::string_view text);
  // target "xml" sets the declaration (as a DOM's createProcessingInstruction("xml", ...)
  // does); any other target appends a processing instruction at document level.
  Node AppendProcessingInstruction(std::string_view target, std::string_view data);
  // The declaration's content, e.g. version="1.0" encoding="UTF-8". Empty: the default.
  void SetDeclaration(std::string_view data) { declaration_ = std::string(data); }

  // Document-level children (comments, processing instructions, the root).
  std::vector<Node> Children() const;

  // Serialised text, per the options.
  std::string ToString(const SaveOptions& options = {}) const;
  // Writes the file; on failure returns false and fills `reason` when given.
  [[nodiscard]] bool Save(const std::filesystem::path& path, const SaveOptions& options = {},
            std::string* reason = nullptr) const;

  _xmlDoc* raw() const { return doc_.get(); }

 private:
  struct Free {
    void operator()(_xmlDoc* doc) const;
  };
  std::unique_ptr<_xmlDoc, Free> doc_;
  std::string declaration_;
};

// A parse either gives a document or the parser's reason.
struct [[nodiscard]] ParseResult {
  std::optional<Document> document;
  std::string reason;  // the parser's message, e.g. "Opening and ending tag mismatch: a line 1 and b"
  int line = 0;        // where it failed (1-based), 0 when not known
  int column = 0;
  explicit operator bool() const { return document.has_value(); }
  // "reason (line L, column C)" or just the reason when no place is known.
  std::string Describe() const;
};

// Parses a file or a text. Whitespace-only text between elements is dropped, as a DOM
// without preserved white space does, so children can be read by position.
ParseResult ParseFile(const std::filesystem::path& path);
ParseResult ParseString(std::string_view text);

struct [[nodiscard]] ValidationResult {
  bool valid = false;
  std::string reason;  // the first problem found: in the schema itself or in the document
  int line = 0;
  explicit operator bool() const { return valid; }
};

// Validates a document against an XSD file.
ValidationResult ValidateAgainstSchema(const Document& document,
                                       const std::filesystem::path& xsd_path);

}  // namespace tessaly::platform::xml
