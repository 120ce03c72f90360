/* Everything a compiler writer needs to emit calls to libkrm. */
#ifndef KRM_H
#define KRM_H

#include "krm/errors.h"
#include "krm/file_statements.h"
#include "krm/format.h"
#include "krm/formatted_write.h"
#include "krm/io_control.h"
#include "krm/io_flags.h"
#include "krm/list_write.h"
#include "krm/program.h"
#include "krm/services.h"
#include "krm/stmt_location.h"
#include "krm/stop.h"
#include "krm/units.h"

#endif
