#pragma once

// What the module keeps for one document: nothing yet. This is the place for per-document
// data if any is ever needed; OvApDataManager drops it when its document goes.
struct CDocData {};
