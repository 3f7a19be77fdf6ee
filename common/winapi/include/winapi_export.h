// Marks what the layer exports; everything else is hidden.
#pragma once

#define WINAPI_EXPORT __attribute__((visibility("default")))
