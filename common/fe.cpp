// fe.cpp - file-name extensions (see fe.h).
#include "common/fe.h"

#include "common/st.h"
#include "common/we.h"

#include <string.h>

#define MODULE "fe"

namespace {

// The "." of the last component, or null.
const char *extension_dot(const char *name) {
  const char *dot = nullptr;
  for (const char *p = name; *p; p++) {
    if (*p == '\\' || *p == '/' || *p == ':') dot = nullptr;
    else if (*p == '.') dot = p;
  }
  return dot;
}

}  // namespace

const char *name_extension(const char *name) {
  if (!name) {
    InternalError(MODULE, __LINE__);
    return nullptr;
  }
  const char *dot = extension_dot(name);
  return dot ? dot + 1 : nullptr;
}

Flag name_cut_extension(char *name) {
  if (!name) {
    InternalError(MODULE, __LINE__);
    return 0;
  }
  char *dot = (char *)extension_dot(name);
  if (!dot) return 0;
  *dot = 0;
  return 1;
}

Flag name_add_extension(char *name, const char *extension) {
  if (!name || !extension) {
    InternalError(MODULE, __LINE__);
    return 0;
  }
  if (extension_dot(name)) return 0;
  st_append(name, KX_PATH, ".");
  st_append(name, KX_PATH, extension);
  return 1;
}
