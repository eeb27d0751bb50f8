#pragma once

// What the module does each time a drawing comes up in a document (message 3), with that
// document current.

// The sixteen zel_* LISP functions, defined in the current document in number order, then
// the add-on's "wd_cfg_read_dwg_params" and "wd_wirlay_get_dwg_wiretype_settings" made
// callable, then the reconciliation below.
void RunDrawingLoad();

// Defines the sixteen functions: ovedDefun(name, number), then ovedRegFunc(handler,
// number), for 1 to 16.
void RegisterLispFunctions();

// Brings the drawing's stored current wire type back in line with its current layer: a
// drawing whose current layer is not a wire layer, and whose stored current wire type is
// not the default one, gets the default back. A drawing read from a file without a WD_M
// block is left alone. The drawing's modified status is as it was before.
void ReconcileCurrentWireType();
