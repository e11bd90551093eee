#include "support/plain_parser.h"

#include <strings.h>

#include <cstdlib>
#include <cstring>
#include <map>

#include "zuCIM/vocabulary.h"

namespace {

using zuCIM::CIMelement;

constexpr int no_element = zuCIM::elem::UNKNOWN;
constexpr int list_error = -1;

bool is_space(char c) {
  return c != '\0' && static_cast<signed char>(c) <= 32;
}

char* skip_space(char* text) {
  while (is_space(*text)) ++text;
  return text;
}

char* find_unquoted(char* text, const char* needle) {
  const std::size_t length = std::strlen(needle);
  while (*text != '\0') {
    if (text[0] == '\'' && text[1] == '\'') {
      text += 2;
    } else if (*text == '"' || *text == '\'') {
      text = std::strchr(text + 1, *text);
      if (text == nullptr) return nullptr;
      ++text;
    } else if (std::strncmp(text, "<!--", 4) == 0) {
      text = std::strstr(text + 4, "-->");
      if (text == nullptr) return nullptr;
      text += 3;
    } else if (std::strncmp(text, needle, length) == 0) {
      return text;
    } else {
      ++text;
    }
  }
  return nullptr;
}

class PlainParser {
 public:
  explicit PlainParser(std::vector<PlainMessage>& messages) : messages_(messages) {}

  int parse_list(char** cursor, CIMelement* node) {
    CIMelement* current = node;
    CIMelement* assigned_parent = nullptr;
    for (;;) {
      if (!skip_markup(cursor)) return list_error;
      if (**cursor == '\0') return no_element;
      const int id = parse_element(cursor, current, assigned_parent);
      if (id == list_error || **cursor == '\0') return id;
      current = made_;
      assigned_parent = current->parent;
    }
  }

 private:
  bool skip_markup(char** cursor) {
    char* text = *cursor;
    if (text[0] == '\0' || text[1] != '!') return true;
    if (*text != '<') return fail("findNextElement: missing '<' sign at begin.");
    while (std::strncmp(text, "<!--", 4) == 0) {
      text = std::strstr(text + 4, "-->");
      if (text == nullptr) return fail("findNextElement: missing '-->'");
      text = skip_space(text + 3);
    }
    while (std::strncmp(text, "<![CDATA[", 9) == 0) {
      text = std::strstr(text + 9, "]]>");
      if (text == nullptr) return fail("findNextElement: missing ']]>'");
      text = skip_space(text + 3);
    }
    *cursor = text;
    return true;
  }

  int parse_element(char** cursor, CIMelement* current, CIMelement* assigned_parent) {
    char* text = *cursor;
    if (*text != '<') return error("findNextElement: missing '<' sign at begin.");
    char name[64] = {};
    ++text;
    for (std::size_t i = 0; *text != '\0' && !is_space(*text) && *text != '/' && *text != '>';
         ++text)
      if (i < 63) name[i++] = *text;
    int id = 0;
    while (id < no_element && std::strcmp(name, zuCIM::known_cim_elements[id]) != 0) ++id;
    if (id == no_element) return error("findNextElement: Unknown CIM Elementname");

    char* attributes = nullptr;
    char* content = nullptr;
    if (*text == '>') {
      content = skip_space(text + 1);
    } else {
      text = skip_space(text);
      if (text[0] == '/' && text[1] == '>') {
        *cursor = skip_space(text + 2);
      } else {
        char* end = find_unquoted(text, ">");
        if (end == nullptr) return error("findNextElement: missing according '>' sign!");
        *end = '\0';
        if (end > text) attributes = text;
        if (end[-1] == '/' || (end[-1] == '?' && name[0] == '?')) {
          end[-1] = '\0';
          *cursor = skip_space(end + 1);
        } else {
          content = skip_space(end + 1);
        }
      }
    }
    if (content != nullptr && !cut_content(name, content, cursor)) return list_error;

    CIMelement* made = current->makeNextElement();
    if (made == nullptr) return error("parseXMLbuffer: MakeNextElement = NULL!!");
    made->name = zuCIM::known_cim_elements[id];
    if (assigned_parent != nullptr) made->parent = assigned_parent;
    if (attributes != nullptr) parse_attributes(attributes, made);
    if (content != nullptr && *content == '<') {
      if (parse_list(&content, made) == list_error) return list_error;
    } else if (content != nullptr && *content != '\0') {
      made->value = strdup(content);
    }
    made_ = made;
    return id;
  }

  // Cuts the content at its end tag and moves the cursor behind that.
  bool cut_content(const char* name, char* content, char** cursor) {
    const std::size_t length = std::strlen(name);
    int depth = 1;
    char* found = find_unquoted(content, name);
    for (; found != nullptr; found = find_unquoted(found + 1, name)) {
      const char follows = found[length];
      if (found[-1] == '/' && found[-2] == '<' && follows == '>') {
        if (depth-- == 1) break;
      } else if (found[-1] == '<' && (follows == ' ' || follows == '>')) {
        ++depth;
      }
    }
    if (found == nullptr) {
      messages_.push_back(
          {zuCIM::trace_level::warning,
           "findNextElement: Missing correspending keyword </" + std::string(name) + ">"});
      return false;
    }
    found[-2] = '\0';
    *cursor = skip_space(found + length + 1);
    return true;
  }

  void parse_attributes(char* text, CIMelement* node) {
    while (*text != '\0') {
      text = skip_space(text);
      char* equals = find_unquoted(text, "=");
      if (equals == nullptr) {
        warn("ParseAttribute: missing '='");
        break;
      }
      *equals = '\0';
      const int id = attribute_id(text);
      *equals = '=';
      char* begin = skip_space(equals + 1);
      if (*begin != '"') {
        warn("ParseAttribute: 1. missing '\"'");
        break;
      }
      char* end = std::strchr(++begin, '"');
      if (end == nullptr) {
        warn("ParseAttribute: 2. missing '\"'");
        break;
      }
      *end = '\0';
      node->attr_put(id, begin);
      *end = '"';
      text = skip_space(end + 1);
    }
    if (node->attributes != nullptr) node->attributes->FreeUnused();
  }

  int attribute_id(const char* name) {
    for (int id = 0; id < zuCIM::attr::UNKNOWN; ++id)
      if (std::strcmp(name, zuCIM::known_cim_attributes[id]) == 0) return id;
    if (strcasecmp(name, "EmbeddedObject") == 0) return zuCIM::attr::EMBEDDEDOBJECT;
    warn("ParseAttribute: unknown CIM Attribute: " + std::string(name));
    return zuCIM::attr::UNKNOWN;
  }

  bool fail(const char* message) {
    messages_.push_back({zuCIM::trace_level::error, message});
    return false;
  }
  int error(const char* message) {
    fail(message);
    return list_error;
  }
  void warn(const std::string& message) {
    messages_.push_back({zuCIM::trace_level::warning, message});
  }

  std::vector<PlainMessage>& messages_;
  CIMelement* made_ = nullptr;
};

std::string text_or_null(const char* text) {
  return text != nullptr ? text : "(null)";
}

std::string describe(const CIMelement& node, const std::map<const CIMelement*, int>& positions) {
  const auto parent = positions.find(node.parent);
  std::string text = text_or_null(node.name) + " parent=" +
                     (node.parent == nullptr      ? "none"
                      : parent == positions.end() ? "outside"
                                                  : std::to_string(parent->second));
  text += " value=" + text_or_null(node.value);
  if (node.attributes == nullptr) return text;
  text += " capacity=" + std::to_string(node.attributes->maxargc);
  for (unsigned i = 0; i < node.attributes->argc; ++i) {
    const char* record = static_cast<const char*>(node.attributes->argv[i]);
    text.append(" ").append(std::to_string(record[0] - 1)).append("=").append(record + 1);
  }
  return text;
}

}  // namespace

unsigned plain_parse(const std::string& text, CIMelement& root,
                     std::vector<PlainMessage>& messages) {
  root.eclean();
  // Two spare bytes in front let the search look back from the first character.
  std::string copy = "  ";
  copy += text.c_str();
  char* declaration = find_unquoted(copy.data() + 2, "<?xml ");
  char* document = declaration != nullptr ? find_unquoted(declaration, "<CIM ") : nullptr;
  if (document == nullptr) return zuCIM::status::failure;
  PlainParser parser(messages);
  return parser.parse_list(&document, &root) == zuCIM::elem::CIM ? zuCIM::status::success
                                                                 : zuCIM::status::failure;
}

std::string tree_difference(const CIMelement& left, const CIMelement& right) {
  std::map<const CIMelement*, int> left_positions;
  std::map<const CIMelement*, int> right_positions;
  const CIMelement* l = &left;
  const CIMelement* r = &right;
  for (int position = 0; l != nullptr && r != nullptr; ++position, l = l->next, r = r->next) {
    left_positions[l] = right_positions[r] = position;
    const std::string left_text = describe(*l, left_positions);
    const std::string right_text = describe(*r, right_positions);
    if (left_text != right_text)
      return std::string("node ") + std::to_string(position) + ": " + left_text + " / " +
             right_text;
  }
  if (l != nullptr) return std::string("only left: ") + describe(*l, left_positions);
  if (r != nullptr) return std::string("only right: ") + describe(*r, right_positions);
  return "";
}
