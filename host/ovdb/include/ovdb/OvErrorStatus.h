#pragma once

// Status numbers of the host. The values are part of the host's contract with its
// modules: modules compare against the numbers, so they never change.
namespace Orvex {

enum ErrorStatus : int {
    eOk = 0,
    eNotImplementedYet = 1,
    eNotApplicable = 2,
    eInvalidInput = 3,
    eOutOfMemory = 6,
    eNullObjectPointer = 15,
    eKeyNotFound = 22,
    eNoDatabase = 35,

    // Object model.
    eNullObjectId = 60,
    eInvalidObjectId = 61,
    eWrongDatabase = 62,
    eWrongObjectType = 63,
    eWasErased = 64,
    eWasNotErased = 65,
    eWasOpenForRead = 66,
    eWasOpenForWrite = 67,
    eNotOpenForRead = 68,
    eNotOpenForWrite = 69,
    eNotOpen = 70,
    eAlreadyInDb = 71,
    eNotInDatabase = 72,
    eDuplicateKey = 73,
    eDuplicateRecordName = 74,
    eInvalidOwnerObject = 75,
    eIteratorDone = 76,
    eObjectToBeDeleted = 77,

    // Drawing files.
    eFileNotFound = 100,
    eFileAccessErr = 101,
    eNotADrawingFile = 102,
    eBadDrawingFormat = 103,
    eDrawingVersionTooNew = 104,
    eDrawingTruncated = 105,
    eDuplicateHandle = 106,
    eDanglingHandle = 107,
    eFileWriteFailed = 108,

    // Numbers that the wire type store returns and compares.
    eEmptyLayerName = 173,
    eInvalidLayerName = 200,
    eWireTypeNotApplied = 340,
    eDuplicateWireType = 383,
};

} // namespace Orvex
