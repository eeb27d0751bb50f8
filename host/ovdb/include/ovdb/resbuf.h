#pragma once

#include <cstdint>

// A value chain: the currency of the LISP bridge, of xrecords and of entity data.
// A chain handed out by the host belongs to the caller, who gives it back with
// ovutRelRb; strings in a chain are owned by the chain.

// LISP value types and result codes.
enum : short {
    RTNONE = 5000,
    RTREAL = 5001,
    RTPOINT = 5002, // 2D point
    RTSHORT = 5003,
    RTANG = 5004,
    RTSTR = 5005,
    RTENAME = 5006,
    RTPICKS = 5007,
    RTORINT = 5008,
    RT3DPOINT = 5009,
    RTLONG = 5010,
    RTVOID = 5014,
    RTLB = 5016,
    RTLE = 5017,
    RTDOTE = 5018,
    RTNIL = 5019,
    RTDXF0 = 5020,
    RTT = 5021,
    RTRESBUF = 5023, // inside ovutBuildList only: splice an existing chain here
};

// Results of LISP bridge and utility calls.
enum : int {
    RTNORM = 5100,
    RTERROR = -5001,
    RTCAN = -5002,
    RTREJ = -5003,
    RTFAIL = -5004,
    RTKWORD = -5005,
};

// Entity name: two machine words that stand for an entity for the length of a session.
using ov_name = std::int64_t[2];

union ovu_resval {
    double rreal;
    double rpoint[3];
    short rint;
    wchar_t* rstring;
    std::int32_t rlong;
    std::int64_t rlname[2];
    struct {
        short clen;
        char* buf;
    } rbinary;
};

struct resbuf {
    resbuf* rbnext;
    short restype;
    ovu_resval resval;
};

// What kind of value a link with a given type code carries.
enum class OvRbValueKind {
    None,    // list brackets, nil, T, dotted-pair marker, void
    String,  // rstring
    Int16,   // rint
    Int32,   // rlong
    Bool,    // rint, 0 or 1
    Real,    // rreal
    Point,   // rpoint
    Name,    // rlname
    Handle,  // rstring holding a hexadecimal handle
    Binary,  // rbinary
    Unknown, // a code that is neither a group code nor a LISP type
};

OvRbValueKind ovutValueKind(int code);
