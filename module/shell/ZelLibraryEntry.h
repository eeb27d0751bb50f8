#pragma once

#include <QString>

// Reasons the host's loader gives the library entry.
inline constexpr unsigned kZelProcessDetach = 0;
inline constexpr unsigned kZelProcessAttach = 1;

// The module file and its resource library, which lies beside it.
extern const wchar_t* const s_moduleFileName;
extern const wchar_t* const s_resourceFileName;

// Loads the resource library into `resourceLibrary`: from the folder of the loaded module
// `moduleFile` first (a module not loaded gives the folder of the program, as the system
// answers for a missing module), else by the file name alone through the system's search.
// True when one of the two loaded.
bool LoadResourceLibrary(const QString& moduleFile, const QString& resourceFile);

// What the module's exported library entry does: at attach (reason 1) the module-wide
// state is set up and the resource library loaded, false when it cannot be, so that the
// host does not keep the module; at detach (reason 0) the library is freed. Other reasons
// are true at once.
bool ZelLibraryEntry(void* instance, unsigned reason);

// The test and host path to the module's resources without ZelWireType.ovm: the attach
// steps, taking ZelWireTypeRes.so from `folder` or, for an empty one, as LoadResourceLibrary
// finds it. True when the library is there afterwards (an earlier attach stands).
// ZelDetachResources frees it and clears the state.
bool ZelAttachResources(const QString& folder);
void ZelDetachResources();
