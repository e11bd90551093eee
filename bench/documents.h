#pragma once

#include <cstddef>
#include <string>

// The documents that are measured: complete CIM-XML response messages as servers write them. Each
// function gives the same text for the same arguments, on every machine.
namespace bench {

// The answer to EnumerateInstances: instances of about 600 bytes with four properties.
std::string small_instances(std::size_t count);

// The same with instances of about 2.5 kB: four keys and 24 properties, among them null ones,
// arrays, and texts with entities.
std::string typical_instances(std::size_t count);

// The answer to GetInstance, of about 600 bytes.
std::string one_instance();

// The answer to EnumerateInstanceNames: names with two keys.
std::string instance_names(std::size_t count);

// The answer to GetClass with all qualifiers: a class of 80 properties and 12 methods.
std::string class_definition();

// One instance with one property, whose text is `length` bytes long.
std::string long_text(std::size_t length);

// The answer to EnumerateInstances of CIM_Namespace with this many namespaces.
std::string namespaces(std::size_t count);

// The whole HTTP request that delivers an indication, and the body of the answer to it.
std::string indication_request();
std::string indication_answer();

// Elements nested `depth` deep.
std::string nested(std::size_t depth);

// Texts of about `size` bytes that make a careless parser search again and again.

// At every level two values with a lone quote in each, single and double in turn. To us the quotes
// hide what is between them.
std::string stray_quotes(std::size_t size);
// At every level what looks like a tag of the element around it, but is quoted or followed by a
// tab.
std::string lookalikes(std::size_t size);
// At every level a comment with tags and quotes in it.
std::string comments(std::size_t size);
// Every element is opened, none is closed.
std::string unclosed(std::size_t size);

}  // namespace bench
