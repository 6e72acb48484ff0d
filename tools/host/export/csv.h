// What `kovactl list --json` prints as comma-separated values, for spreadsheets and scripts.
#pragma once

#include <string>
#include <vector>

#include "tools/host/system/json_ptr.h"

namespace kova_host {

// What can be told of an item, in the order of a table for which nobody has chosen: the keys of
// json_item that hold one value, and "findings", the rules that have found something on it. They
// stay; new ones come at the end.
const std::vector<std::string>& csv_fields();

// Throws HostError (usage) for a field that there is not, with the nearest.
void require_csv_field(const std::string& field);

// "id,path,value". Throws HostError (usage) as require_csv_field, and for a field named twice.
std::vector<std::string> parse_csv_fields(const std::string& list);

// A header and a line for each of the document's items (RFC 4180: lines end in CR LF, and a cell
// with a comma or a quotation mark stands in such marks). Numbers have at most fifteen significant
// digits and a point; what an item lacks is an empty cell; texts are shown as by field_text, so
// that no cell holds a line's end. "=" and its kin at the beginning of a text are left alone.
std::string csv_table(const json_t* list_document, const std::vector<std::string>& fields);

// Puts the document's items into the order of a field: numbers, then texts by their bytes, then
// those without one; among equals the order stays. Throws HostError (usage) as require_csv_field.
void sort_list(json_t* list_document, const std::string& field);

}  // namespace kova_host
