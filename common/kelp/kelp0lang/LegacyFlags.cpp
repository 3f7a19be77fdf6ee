#include "kelp0lang/LegacyFlags.h"

namespace {

bool modIta = false;
bool languageIta = false;
bool lumenCrashRoad = false;
bool lumenCrashSnow = false;

}  // namespace

bool IsModIta() {
  return modIta;
}
void SetModIta(bool on) {
  modIta = on;
}

bool IsLanguageIta() {
  return languageIta;
}
void SetLanguageIta(bool on) {
  languageIta = on;
}

bool IsLumenCrashRoad() {
  return lumenCrashRoad;
}
void SetLumenCrashRoad(bool on) {
  lumenCrashRoad = on;
}

bool IsLumenCrashSnow() {
  return lumenCrashSnow;
}
void SetLumenCrashSnow(bool on) {
  lumenCrashSnow = on;
}
