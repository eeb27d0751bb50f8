#pragma once

// The sixteen LISP functions of the module, registered at each drawing load by number
// (ovedDefun(name, number), then ovedRegFunc(handler, number)). Each reads its arguments
// with ovedGetArgs, sets its result and returns 1, or 3 to have the host report a failed
// call.

// Dialog functions: 1, 8, 16.
int zel_wire_type_sel();          // 1
int zel_rename_wire_properties(); // 8
int zel_invoke_importwt_dlg();    // 16

// Read functions: 2, 4, 5, 10, 13, 14, 15.
int zel_get_current_wiretype();      // 2
int zel_get_wiretype_settings();     // 4
int zel_query_wiretype();            // 5
int zel_get_active_dwg_wiretype();   // 10
int zel_get_default_wiretype();      // 13
int zel_get_dwg_wiretype_settings(); // 14
int zel_get_wiretype_layer_info();   // 15

// Write functions: 3, 6, 7, 9, 11, 12.
int zel_reset_current_wiretype(); // 3
int zel_add_wiretype();           // 6
int zel_edit_wiretype();          // 7
int zel_set_current_wiretype();   // 9
int zel_remove_wiretype();        // 11
int zel_set_default_wiretype();   // 12
