// switches.cpp - reading SETUP.EXE's switches.
#include "installer/switches.h"

#include "common/st.h"

#include <stdio.h>
#include <string.h>

namespace {

enum Kind { SWITCH_MODE, SWITCH_HELP, SWITCH_PATH, SWITCH_FLAG, SWITCH_FILE };

struct SwitchName {
  const char *name;
  Kind kind;
};

// clang-format off
const SwitchName NAMES[] = {
    {"SILENT", SWITCH_MODE},      {"VERYSILENT", SWITCH_MODE},  {"HELP", SWITCH_HELP},
    {"?", SWITCH_HELP},           {"DIR", SWITCH_PATH},         {"SOURCE", SWITCH_PATH},
    {"DESKTOP", SWITCH_FLAG},     {"QUICKLAUNCH", SWITCH_FLAG}, {"KEEPCONFIG", SWITCH_FLAG},
    {"LOG", SWITCH_FILE},
};
// clang-format on

// The argument as it is shown in a reason: at most 60 characters, "..." after a cut one.
void refuse(SetupSwitches *s, const char *argument, const char *why) {
  char shown[64];
  size_t n = strlen(argument);
  if (n > 60) snprintf(shown, sizeof shown, "%.57s...", argument);
  else snprintf(shown, sizeof shown, "%s", argument);
  snprintf(s->reason, sizeof s->reason, "Chybný přepínač %s: %s", shown, why);
}

Flag same_name(const char *given, size_t length, const char *name) {
  if (strlen(name) != length) return 0;
  for (size_t i = 0; i < length; i++) {
    char c = given[i];
    if (c >= 'a' && c <= 'z') c = (char)(c - 32);
    if (c != name[i]) return 0;
  }
  return 1;
}

// A directory with its trailing "\" into out (KX_PATH). 0 when it does not fit.
Flag directory_value(const char *value, char *out) {
  size_t n = strlen(value);
  Flag slash = n > 0 && value[n - 1] == '\\';
  if (n + (slash ? 0 : 1) > KX_PATH - 1) return 0;
  memcpy(out, value, n);
  if (!slash) out[n++] = '\\';
  out[n] = 0;
  return 1;
}

Flag read_one(SetupSwitches *s, const char *argument) {
  const char *body = argument + 1;
  const char *equals = strchr(body, '=');
  size_t length = equals ? (size_t)(equals - body) : strlen(body);
  const SwitchName *known = nullptr;
  for (const SwitchName &n : NAMES)
    if (same_name(body, length, n.name)) known = &n;
  if (!known) return 1;  // not ours: ignored, as the start-up always did
  s->given++;
  const char *value = equals ? equals + 1 : nullptr;
  if (known->kind == SWITCH_MODE || known->kind == SWITCH_HELP) {
    if (value) {
      refuse(s, argument, "tento přepínač nemá hodnotu");
      return 0;
    }
    if (known->kind == SWITCH_HELP) s->help = 1;
    else if (same_name(body, length, "VERYSILENT")) s->mode = SETUP_VERY_SILENT;
    else if (s->mode != SETUP_VERY_SILENT) s->mode = SETUP_SILENT;
    return 1;
  }
  if (!value || !value[0]) {
    refuse(s, argument, "chybí hodnota");
    return 0;
  }
  if (known->kind == SWITCH_FLAG) {
    if ((value[0] != '0' && value[0] != '1') || value[1]) {
      refuse(s, argument, "hodnota musí být 0 nebo 1");
      return 0;
    }
    int16_t on = value[0] == '1';
    if (same_name(body, length, "DESKTOP")) s->desktop = on;
    else if (same_name(body, length, "QUICKLAUNCH")) s->quick_launch = on;
    else s->keep_config = on;
    return 1;
  }
  if (known->kind == SWITCH_FILE) {
    if (st_put(s->log, sizeof s->log, value)) return 1;
    s->log[0] = 0;
    refuse(s, argument, "příliš dlouhá cesta");
    return 0;
  }
  Flag target = same_name(body, length, "DIR");
  if (target && !(((value[0] | 0x20) >= 'a' && (value[0] | 0x20) <= 'z') && value[1] == ':')) {
    refuse(s, argument, "cesta musí začínat jednotkou (C:)");
    return 0;
  }
  if (!directory_value(value, target ? s->target : s->source)) {
    refuse(s, argument, "příliš dlouhá cesta");
    return 0;
  }
  return 1;
}

}  // namespace

Flag setup_read_switches(int argc, const char *const *argv, SetupSwitches *switches) {
  if (!switches) return 0;
  memset(switches, 0, sizeof *switches);
  switches->desktop = SETUP_NOT_GIVEN;
  switches->quick_launch = SETUP_NOT_GIVEN;
  switches->keep_config = 1;
  if (!argv && argc > 1) {
    snprintf(switches->reason, sizeof switches->reason, "Chybný příkazový řádek");
    return 0;
  }
  // All are read, also after a bad one: how quiet the refusal must be depends on the others.
  Flag ok = 1;
  char first_reason[SETUP_REASON_SIZE] = "";
  for (int i = 1; i < argc; i++) {
    const char *argument = argv[i];
    if (!argument || (argument[0] != '/' && argument[0] != '-') || !argument[1]) continue;
    if (!read_one(switches, argument) && ok) {
      ok = 0;
      memcpy(first_reason, switches->reason, sizeof first_reason);
    }
  }
  if (!ok) memcpy(switches->reason, first_reason, sizeof first_reason);
  return ok;
}
