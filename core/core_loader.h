#pragma once

#include "core/q_dispatch.h"

/// The suite's signature core: the library, and the one agent around its core object. Both are the
/// loader's own, and there is one of each in the process. GUI thread only.

/// Loads "bin/PXSignatureCoreV10" below the working directory and wraps its core object in an
/// agent. True when the core agent exists; a call after a successful one loads nothing again. After
/// failure nothing is kept, and a later call tries anew.
bool qtcall_init();

/// Deletes the agent, so that a pointer from `getSignatureCore` ends here, and the library handle.
/// The library stays mapped and "PX_Uninit" is not called: the core's objects may still be in use
/// elsewhere in the process. Does nothing when nothing is loaded.
void qtcall_destroy();

/// The core agent, or null when no core is loaded. Owned by the loader.
PXSignatureCoreAgent *getSignatureCore();
