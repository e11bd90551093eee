#include "zuCIM/container.h"

#include "CIMconnection/registry.h"

namespace zuCIM {

CIMcontainer::CIMcontainer()
    : currentClass(nullptr),
      listener(nullptr),
      methodName(nullptr),
      index(no_index),
      callerValue(0) {}

CIMcontainer::CIMcontainer(const CIMcontainer& source) : CIMcontainer() {
  *this = source;
}

CIMcontainer::~CIMcontainer() = default;

CIMcontainer& CIMcontainer::operator=(const CIMcontainer& source) noexcept {
  if (this == &source) return *this;
  CIMconnection::operator=(source);
  classes = source.classes;
  methodName = source.methodName;
  currentClass = source.currentClass;
  change_index(*this, source.index);
  callerValue = source.callerValue;
  // A listener is never shared.
  listener = nullptr;
  return *this;
}

void CIMcontainer::free_all() noexcept {
  currentClass = nullptr;
  classes.clsClean();
  ESXi_Occupied(true);
  releaseCurlHandle();
  ESXi_Occupied(false);
  cimStatus = 0;
}

}  // namespace zuCIM
