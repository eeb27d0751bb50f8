#pragma once

// The messages the host sends to a module's ovrxEntryPoint, and what the module answers.
namespace OvRx {

enum AppMsgCode : int {
    kNullMsg = 0,
    kInitAppMsg = 1,   // right after loading; packet: the module's app id
    kUnloadAppMsg = 2, // before unloading; packet: the module's app id
    kLoadDwgMsg = 3,   // a drawing is open in a document (the packet), current during the call
    kUnloadDwgMsg = 4, // the document (the packet), current during the call, is about to close
    kInvkSubrMsg = 5,  // a LISP function of the module without a registered handler is called
    kCfgMsg = 6,
    kEndMsg = 7,
    kQuitMsg = 8,
    kSaveMsg = 9,
    kDependencyMsg = 10,
    kNoDependencyMsg = 11,
    kOleUnloadAppMsg = 12,
    kPreQuitMsg = 13,
    kInitDialogMsg = 14,
    kEndDialogMsg = 15,
};

enum AppRetCode : int {
    kRetOK = 0,
    kRetError = 3, // at kInitAppMsg: do not keep me; at kUnloadAppMsg: do not unload me
};

} // namespace OvRx
