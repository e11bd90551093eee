#include "loader.h"

#include <algorithm>
#include <deque>
#include <pugixml.hpp>
#include <string>
#include <string_view>
#include <vector>

#include "instance_builder.h"
#include "names.h"
#include "xml_reader.h"

namespace simulator {

namespace {

struct ClassDeclaration {
  std::string file;
  std::string name_space;  // empty: every namespace
  std::unique_ptr<Class> declared;
};

struct InstanceToAdd {
  std::string file;
  std::string name_space;
  InstanceDeclaration declared;
};

// Everything the files say, before it is put together.
struct Declarations {
  std::deque<ClassDeclaration> classes;
  std::vector<InstanceToAdd> instances;
};

std::vector<std::filesystem::path> files_of(const std::filesystem::path& directory) {
  std::vector<std::filesystem::path> files;
  std::error_code error;
  for (const auto& entry : std::filesystem::directory_iterator(directory, error)) {
    if (entry.path().extension() == ".xml") files.push_back(entry.path());
  }
  if (files.empty()) throw DeclarationError("no declaration files in " + directory.string());
  std::sort(files.begin(), files.end());
  return files;
}

// A declaration is wrapped in VALUE.OBJECT, or stands alone.
pugi::xml_node unwrapped(const pugi::xml_node& node) {
  return std::string_view(node.name()) == "VALUE.OBJECT" ? first_element(node) : node;
}

void collect_group(const pugi::xml_node& group, const std::string& file, Declarations& out) {
  const std::string name_space = read_namespace_path(group.child("LOCALNAMESPACEPATH"));
  for (const auto& child : group.children()) {
    const pugi::xml_node node = unwrapped(child);
    const std::string_view element = node.name();
    if (element == "CLASS") {
      out.classes.push_back({file, name_space, read_class(node)});
    } else if (element == "INSTANCE") {
      if (name_space.empty()) throw FormatError("an instance needs a namespace");
      out.instances.push_back({file, name_space, read_instance(node)});
    } else if (element != "LOCALNAMESPACEPATH" && node.type() == pugi::node_element) {
      throw FormatError("unexpected " + std::string(element) + " in DECLGROUP");
    }
  }
}

void collect_file(const std::filesystem::path& path, Declarations& out) {
  const std::string file = path.filename().string();
  pugi::xml_document document;
  const auto result = document.load_file(path.c_str(), parse_options);
  if (!result) {
    throw DeclarationError(file + ": " + result.description() + " at byte " +
                           std::to_string(result.offset));
  }
  const auto declaration = document.child("CIM").child("DECLARATION");
  if (!declaration) throw DeclarationError(file + ": no DECLARATION in it");
  try {
    for (const auto& group : declaration.children("DECLGROUP")) collect_group(group, file, out);
  } catch (const FormatError& error) {
    throw DeclarationError(file + ": " + error.what());
  }
}

void make_namespaces(Repository& repository, const Declarations& declarations) {
  for (const auto& each : declarations.classes) {
    if (!each.name_space.empty()) repository.obtain(each.name_space);
  }
  for (const auto& each : declarations.instances) repository.obtain(each.name_space);
}

bool superclass_is_known(const Namespace& name_space, const Class& declared) {
  return declared.superclass_name.empty() ||
         name_space.find_class(declared.superclass_name) != nullptr;
}

using Pending = std::deque<const ClassDeclaration*>;

// Adds the classes whose superclass is there already; says whether there were any.
bool add_ready_classes(Namespace& name_space, Pending& pending) {
  const std::size_t before = pending.size();
  Pending waiting;
  for (const ClassDeclaration* each : pending) {
    if (!superclass_is_known(name_space, *each->declared)) {
      waiting.push_back(each);
      continue;
    }
    try {
      name_space.add_class(std::make_unique<Class>(*each->declared));
    } catch (const DeclarationError& error) {
      throw DeclarationError(each->file + ": " + error.what());
    }
  }
  pending = std::move(waiting);
  return pending.size() < before;
}

void add_classes(Namespace& name_space, const Declarations& declarations) {
  Pending pending;
  for (const auto& each : declarations.classes) {
    const bool here = each.name_space.empty() || same_name(each.name_space, name_space.name());
    if (here) pending.push_back(&each);
  }
  while (!pending.empty() && add_ready_classes(name_space, pending)) {
  }
  if (!pending.empty()) {
    const Class& orphan = *pending.front()->declared;
    throw DeclarationError(pending.front()->file + ": " + orphan.name + " has no superclass " +
                           orphan.superclass_name + " in " + name_space.name());
  }
}

void add_instance(Repository& repository, InstanceToAdd& each) {
  Namespace& name_space = repository.obtain(each.name_space);
  try {
    const Class* type = name_space.find_class(each.declared.class_name);
    if (type == nullptr) {
      throw DeclarationError("no class " + each.declared.class_name + " in " + name_space.name());
    }
    name_space.add_instance(build_instance(*type, std::move(each.declared)));
  } catch (const DeclarationError& error) {
    throw DeclarationError(each.file + ": " + error.what());
  }
}

}  // namespace

void load_directory(Repository& repository, const std::filesystem::path& directory) {
  Declarations declarations;
  for (const auto& file : files_of(directory)) collect_file(file, declarations);
  make_namespaces(repository, declarations);
  for (const auto& [key, name_space] : repository.namespaces()) {
    add_classes(*name_space, declarations);
  }
  for (auto& each : declarations.instances) add_instance(repository, each);
}

}  // namespace simulator
