#pragma once

/// What the sanitizers say about the threads and the memory of OpenGL's driver, which they see only
/// parts of, is not about us. A program that is linked with SanitizedDriver.cpp passes it over.

/// Leaks are passed over by the name of a library, which must still be loaded at the end: keeps the
/// drivers that are loaded now until then. Does nothing without the address sanitizer.
void KeepLoadedDrivers();
