// Findings for other programs.
#include "tools/host/judgements/finding_json.h"

namespace kova_host {

JsonPtr json_findings(const std::vector<Finding>& findings) {
  JsonPtr array = own(json_array());
  for (const Finding& finding : findings) {
    JsonPtr object = own(json_object());
    put(object, "rule", json_text(finding.kind));
    put(object, "severity", json_text(severity_name(finding.severity)));
    put(object, "id", json_text(id_text(finding.id)));
    put(object, "path", json_text(finding.path));
    put(object, "message", json_text(finding.message()));
    if (!finding.action.empty()) {
      put(object, "action", json_text(finding.action));
    }
    append(array, std::move(object));
  }
  return array;
}

}  // namespace kova_host
