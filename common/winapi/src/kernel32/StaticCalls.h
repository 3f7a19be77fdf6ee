// Calls of the layer by their names where it is a static library: the names of a program that holds
// it aren't the loader's to find, and what nobody calls isn't even linked.
#pragma once

// The call, null where the layer is shared or the name isn't one of those that the libraries look
// for.
void* StaticCall(const char* name);
