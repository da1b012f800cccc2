// Static objects of the module that this is linked into.
#pragma once

/// Functions given to atexit run when the DLL is unloaded, instead of when the process ends. Before runInitialisers().
bool keepExitFunctionsInModule();

/// Runs the initialisers that the linker has collected, in its order. False if one of them has failed.
bool runInitialisers();

/// Runs the functions given to atexit, the last one first.
void runExitFunctions();
