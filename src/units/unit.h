// The record of one Fortran unit and its connection.
#pragma once

#include <pthread.h>
#include <stdint.h>
#include <stdio.h>

// A user's handler for input errors; the library only reads the pointer.
typedef int (*unit_err_handler)(void);

struct secondary_block;

struct unit {
    pthread_mutex_t mutex;  // guards owner, waiters, lock_depth; never held across file work
    pthread_cond_t cond;    // signalled when lock_depth falls to 0 with waiters
    pthread_t owner;        // thread holding the unit
    uint32_t waiters;       // threads blocked on cond
    int32_t lock_depth;     // holds by owner; 0 means free
    int32_t unit_number;
    uint32_t flags;         // UNIT_* below
    char *file_name;        // heap copy, owned; null for a default unit on its stream
    int fd;
    FILE *stream;           // set only on a default record with a usable standard stream
    uint64_t st_dev;
    uint64_t st_ino;
    int64_t next_record;
    int64_t recl;
    int64_t list_line_limit;  // last column for folding list and namelist output
    int64_t record_limit;     // RECL= as stated; 0 when none was
    int64_t record_pos;       // bytes already in the current output record
    uint64_t items_read;
    uint32_t block_size;
    uint32_t buffer_size;
    char *buffer;
    char *buffer_end;
    char *write_ptr;   // first byte not yet passed to the file
    char *data_ptr;    // input: next byte to consume; output: start of this statement's data
    char *data_end;    // first byte after valid data; output: next free byte
    char *record_start;
    char *field_ptr;
    char *tab_limit;
    char *record_end;
    uint32_t secondary_size;
    char *secondary_buffer;
    char *secondary_ptr;
    char *secondary_end;
    secondary_block *secondary_head;
    secondary_block *secondary_tail;
    unit_err_handler err_handler;
    char *err_pos;
    char err_chars[256];
    uint32_t flags2;
};

// unit.flags
constexpr uint32_t UNIT_CONNECTED = 0x1;
constexpr uint32_t UNIT_RECORD_IN_BUFFER = 0x2;
constexpr uint32_t UNIT_NESTED = 0x4;
constexpr uint32_t UNIT_RETRY_EINTR = 0x8;
constexpr uint32_t UNIT_FLUSH_EACH = 0x10;
constexpr uint32_t UNIT_BUFFER_GROWN = 0x20;
constexpr uint32_t UNIT_EOF_SEEN = 0x40;
constexpr uint32_t UNIT_AFTER_EOF = 0x80;
constexpr uint32_t UNIT_READING = 0x100;
constexpr uint32_t UNIT_WRITING = 0x200;
constexpr uint32_t UNIT_CAN_READ = 0x400;
constexpr uint32_t UNIT_CAN_WRITE = 0x800;
constexpr uint32_t UNIT_SEQUENTIAL = 0x1000;
constexpr uint32_t UNIT_FORMATTED = 0x2000;
constexpr uint32_t UNIT_PRINT = 0x4000;
constexpr uint32_t UNIT_BINARY = 0x8000;
constexpr uint32_t UNIT_BLANK_ZERO = 0x10000;
constexpr uint32_t UNIT_NOPAD = 0x20000;
constexpr uint32_t UNIT_DELIM = 0x40000;
constexpr uint32_t UNIT_DELIM_QUOTE = 0x80000;
constexpr uint32_t UNIT_SCRATCH = 0x100000;
constexpr uint32_t UNIT_REGULAR = 0x200000;
constexpr uint32_t UNIT_STREAM = 0x1000000;
constexpr uint32_t UNIT_ASYNC = 0x2000000;
constexpr uint32_t UNIT_DECIMAL_COMMA = 0x4000000;
constexpr uint32_t UNIT_ROUND = 0x38000000;
constexpr uint32_t UNIT_BLANK_NULL = 0x40000000;

// unit.flags2
constexpr uint32_t UNIT_ERR_CHARS_COUNT = 0x1ff;
constexpr uint32_t UNIT_SWAP = 0x200;
constexpr uint32_t UNIT_ALIGN = 0x1c00;
constexpr uint32_t UNIT_TRUNCATE_OWED = 0x2000;

// Record lengths of a connection that stated none.
constexpr int64_t RECL_FORMATTED_DEFAULT = 0x7ffffffe;
constexpr int64_t RECL_UNFORMATTED_DEFAULT = 0x7fffffff;

inline bool unit_is_formatted(const unit *up) {
    return (up->flags & (UNIT_FORMATTED | UNIT_PRINT)) != 0;
}
