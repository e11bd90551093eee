#pragma once

// zuCIM: a client library for CIM operations over HTTP (CIM-XML).
//
// The calling order: fill a _THR_SERVER_ record and call makeContainer; find the context with
// getCIM and getContainer; admit it with addContainer; mark it busy with ESXi_Occupied(true);
// choose a class with setCurrentClass; call an operation; read the results from the current class
// entry and the status with ChkCimStatus; mark the context free with ESXi_Occupied(false); give it
// back with eraseContainers, or all contexts with clearContainers.
//
// No function throws. A context is used by one thread at a time; different contexts may be used by
// different threads at once.

#include "zuCIM/array.h"
#include "zuCIM/class.h"
#include "zuCIM/connection.h"
#include "zuCIM/container.h"
#include "zuCIM/element.h"
#include "zuCIM/indication.h"
#include "zuCIM/vocabulary.h"
