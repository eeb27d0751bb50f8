#pragma once

#include <QtGlobal>

// Names one opened project. Every open of a project gets a new id, so that an id kept from
// a project since closed names nothing rather than whatever was opened next.
struct ZelPrmProjectId {
    quint32 serial = 0;

    bool isNull() const { return serial == 0; }
    friend bool operator==(const ZelPrmProjectId&, const ZelPrmProjectId&) = default;
};
