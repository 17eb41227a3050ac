/** @file
 * The library for C, and for languages that call C: reads archives, and expands them into folders.
 *
 *     harbor6_formats *formats = harbor6_formats_new();
 *     harbor6_formats_load(formats, NULL);
 *     harbor6_archive *archive;
 *     if (harbor6_open_path(formats, "x.cab", &archive) == HARBOR6_OK)
 *         for (size_t i = 0; i < harbor6_count(archive); ++i)
 *             puts(harbor6_path(archive, i));
 *     harbor6_close(archive);
 *     harbor6_formats_free(formats);
 *
 * Opening an archive reads its head, so that its entries (its files) are known before any data is read; they
 * have the numbers 0 to harbor6_count() - 1. There is no global state but the code page. Threads may share
 * the formats once they are loaded; an archive and its streams belong to one thread at a time. No function
 * raises anything through its caller, and callbacks must not either: they return nonzero to end what is
 * running, and use no function on an archive that is being read but those that tell about its entries: all
 * others return HARBOR6_FAILED. No pointer may be NULL unless that is allowed. All texts are UTF-8, end with
 * a zero, and belong to the library: they are valid until the next call with the same object, those of
 * entries until the archive is closed. */
#ifndef HARBOR6_C_H
#define HARBOR6_C_H

#include <stddef.h>
#include <stdint.h>

#define HARBOR6_C_API __attribute__((visibility("default")))

#ifdef __cplusplus
extern "C" {
#endif

/** How a call ended. More may follow, so other values are to be treated as HARBOR6_FAILED. */
typedef enum harbor6_status {
    HARBOR6_OK = 0,
    HARBOR6_FAILED = 1,         /**< for a reason that is none of the others */
    HARBOR6_NOT_AN_ARCHIVE = 2, /**< no format recognises it */
    HARBOR6_BAD_CONTENT = 3,    /**< the archive is damaged, cut short, or not supported by its format */
    HARBOR6_SYSTEM = 4,         /**< a file or folder can't be read or written */
    HARBOR6_NO_MEMORY = 5,
    HARBOR6_ABORTED = 6,   /**< a callback returned nonzero */
    HARBOR6_NO_ENTRY = 7,  /**< there is no such entry */
    HARBOR6_INCOMPLETE = 8 /**< harbor6_expand went through the archive, but some entries were not written; or
                            * harbor6_find through the file, but some places were not tested */
} harbor6_status;

typedef struct harbor6_formats harbor6_formats; /**< the formats of loaded plug-ins */
typedef struct harbor6_archive harbor6_archive; /**< one that was opened */
typedef struct harbor6_stream harbor6_stream;   /**< the bytes of an entry, to be read and sought in */
typedef struct harbor6_pass harbor6_pass;       /**< entries that are read one after another */

/** The version of the library: 0x010203 is 1.2.3. */
HARBOR6_C_API uint32_t harbor6_version(void);

/* --- Formats --- */

/** Without formats; NULL if there is no memory. The archives that were opened with them must be closed first.
 */
HARBOR6_C_API harbor6_formats* harbor6_formats_new(void);
HARBOR6_C_API void harbor6_formats_free(harbor6_formats* formats);
/** Loads the plug-ins in `folder`, or the installed ones if it is NULL. HARBOR6_FAILED if a plug-in was
 * refused, or if there are no formats at all; the formats of the others can be used. */
HARBOR6_C_API harbor6_status harbor6_formats_load(harbor6_formats* formats, const char* folder);
/** What the last load refused, a line for each; "" if nothing. */
HARBOR6_C_API const char* harbor6_formats_error(const harbor6_formats* formats);
/** The short name of one, such as "cab"; NULL if there are no more than `number`. */
HARBOR6_C_API const char* harbor6_formats_name(const harbor6_formats* formats, size_t number);
/** Sets the code page of names that are not marked as UTF-8, for the whole process: an iconv name such as
 * "CP932", or "" for what is guessed otherwise. To be called while nothing else is. HARBOR6_FAILED if the
 * system doesn't know it. */
HARBOR6_C_API harbor6_status harbor6_set_code_page(const char* name);

/* --- Opening --- */

/** Bytes that the caller supplies. */
typedef struct harbor6_source {
    void* context; /**< passed to `read` */
    uint64_t size; /**< in bytes */
    /** Reads up to `length` bytes at `offset` into `buffer` and sets `*came`, 0 only at the end. Nonzero ends
     * the call that reads, with HARBOR6_ABORTED. */
    int (*read)(void* context, uint64_t offset, void* buffer, size_t length, size_t* came);
} harbor6_source;

/** Each sets `*archive`, also where it fails, so that harbor6_error can tell why, except where there is no
 * memory: then it is NULL. It is to be closed in any case. An archive whose head is damaged opens with
 * HARBOR6_BAD_CONTENT, and has the entries in front of the damage, which can be tried. */
/** If the archive consists of several files, such as a set of cabinets, `path` is one of them, and the others
 * are those beside it that have the names it states. The entries are then those of all of them. */
HARBOR6_C_API harbor6_status harbor6_open_path(const harbor6_formats* formats, const char* path,
                                               harbor6_archive** archive);
/** From the present position of `descriptor`, which remains the caller's and may be closed at once. What
 * comes from a pipe is kept, in memory up to 16 MiB, then in a temporary file without a name. */
HARBOR6_C_API harbor6_status harbor6_open_descriptor(const harbor6_formats* formats, int descriptor,
                                                     harbor6_archive** archive);
/** `bytes` must stay as they are until the archive is closed. */
HARBOR6_C_API harbor6_status harbor6_open_memory(const harbor6_formats* formats, const void* bytes,
                                                 size_t length, harbor6_archive** archive);
/** `source` is copied; what its context points to must live until the archive is closed. */
HARBOR6_C_API harbor6_status harbor6_open_source(const harbor6_formats* formats, const harbor6_source* source,
                                                 harbor6_archive** archive);
/** One file of an archive that consists of several. */
typedef struct harbor6_part {
    const char* name; /**< of the file: decides where the bytes of several would fit; may be NULL */
    harbor6_source source;
} harbor6_part;
/** Such an archive, with its files in any order. As harbor6_open_source does with each. */
HARBOR6_C_API harbor6_status harbor6_open_parts(const harbor6_formats* formats, const harbor6_part* parts,
                                                size_t count, harbor6_archive** archive);
/** NULL is allowed. Streams of the archive remain usable. */
HARBOR6_C_API void harbor6_close(harbor6_archive* archive);

/** How the last call that returned a status ended, and its text, one line; "" after HARBOR6_OK. With NULL, as
 * where there was no memory for the archive, that is said. */
HARBOR6_C_API harbor6_status harbor6_error_code(const harbor6_archive* archive);
HARBOR6_C_API const char* harbor6_error(const harbor6_archive* archive);

/* --- Entries --- */

/** The short name of the archive's format, such as "cab"; "" if it could not be opened. */
HARBOR6_C_API const char* harbor6_format(const harbor6_archive* archive);
HARBOR6_C_API size_t harbor6_count(const harbor6_archive* archive);
/** Sets `*entry` to the first entry of that path. HARBOR6_NO_ENTRY if there is none. */
HARBOR6_C_API harbor6_status harbor6_lookup(harbor6_archive* archive, const char* path, size_t* entry);

/* The functions below give "" or 0 for a number that no entry has. */

/** With '/' between names. It may hold names such as "..": harbor6_expand is safe against them. */
HARBOR6_C_API const char* harbor6_path(const harbor6_archive* archive, size_t entry);
/** In bytes, as the archive states it. */
HARBOR6_C_API uint64_t harbor6_size(const harbor6_archive* archive, size_t entry);

/** A time without a zone, local to the writer of the archive. */
typedef struct harbor6_time {
    int year, month, day; /**< the month 1 to 12 */
    int hour, minute, second;
} harbor6_time;
/** Sets `*time` to the time of the last change. 0 if the archive has none. */
HARBOR6_C_API int harbor6_modified(const harbor6_archive* archive, size_t entry, harbor6_time* time);

enum {
    HARBOR6_READ_ONLY = 1,
    HARBOR6_HIDDEN = 2,
    HARBOR6_SYSTEM_FILE = 4,
    HARBOR6_ARCHIVE_BIT = 32,
    HARBOR6_EXECUTABLE = 64
};
/** Those that are set, added up. */
HARBOR6_C_API uint32_t harbor6_attributes(const harbor6_archive* archive, size_t entry);
/** The other attributes that the format knows, by their key: "compMethod", "pathName". NULL or 0 if there is
 * none. */
HARBOR6_C_API const char* harbor6_text(const harbor6_archive* archive, size_t entry, const char* key);
HARBOR6_C_API int harbor6_number(const harbor6_archive* archive, size_t entry, const char* key,
                                 int64_t* value);

/* --- Reading --- */

/** Receives the bytes of entries. `wants` and `ended` may be NULL. */
typedef struct harbor6_receiver {
    void* context; /**< passed to the functions */
    /** Whether the entry is wanted, asked once for each, in order; NULL: all are. */
    int (*wants)(void* context, size_t entry);
    /** More bytes of a wanted entry. Entries come one after another, though not always in their order; those
     * that share bytes come together. Nonzero ends the reading with HARBOR6_ABORTED. */
    int (*bytes)(void* context, size_t entry, const void* bytes, size_t length);
    /** The entry ended. `complete` is 0 if bytes of it are missing or damaged. */
    void (*ended)(void* context, size_t entry, int complete);
} harbor6_receiver;

/** Whether data whose checksum is wrong is delivered all the same, which is told as HARBOR6_BAD_CONTENT then
 * too. At first it isn't. */
HARBOR6_C_API harbor6_status harbor6_ignore_checksums(harbor6_archive* archive, int ignored);

/** Reads the wanted entries in one pass and with constant memory: the fastest way to read several. Damage
 * costs the entries that need what is damaged; those that ended complete are sound, whatever is returned. */
HARBOR6_C_API harbor6_status harbor6_read(harbor6_archive* archive, const harbor6_receiver* receiver);

/** Reads one entry whole, and sets `*stream` to its bytes, which are kept in memory as long as all streams of
 * the process need no more than 16 MiB, beyond that in temporary files without names. An entry with more than
 * `most` bytes is HARBOR6_FAILED. With HARBOR6_BAD_CONTENT the stream has the bytes in front of the damage,
 * or all of them if only a checksum is wrong.
 * Where `*stream` would be empty for another reason, it is NULL. */
HARBOR6_C_API harbor6_status harbor6_open_entry(harbor6_archive* archive, size_t entry, uint64_t most,
                                                harbor6_stream** stream);
HARBOR6_C_API uint64_t harbor6_stream_size(const harbor6_stream* stream);
/** Reads up to `length` bytes and returns how many: fewer at the end. -1 if the temporary file can't be read.
 */
HARBOR6_C_API int64_t harbor6_stream_read(harbor6_stream* stream, void* buffer, size_t length);
/** Goes to `offset`, to the end at most, and returns where it is then. */
HARBOR6_C_API uint64_t harbor6_stream_seek(harbor6_stream* stream, uint64_t offset);
/** NULL is allowed. */
HARBOR6_C_API void harbor6_stream_close(harbor6_stream* stream);

/** Begins to read the entry `first` and then those of higher numbers, in one pass on a thread of its own,
 * which is at most about 1 MiB ahead of the caller. Until the pass is closed, other functions that read the
 * archive return HARBOR6_FAILED. */
HARBOR6_C_API harbor6_status harbor6_pass_open(harbor6_archive* archive, size_t first, harbor6_pass** pass);
/** Goes to the next entry, the first time to `first`, passing over what was not read of the present one.
 * Entries come in the order of their data; those whose data begin before the end of the one in front are left
 * out, and need another pass. 0 if no more come: harbor6_pass_close tells why. */
HARBOR6_C_API int harbor6_pass_next(harbor6_pass* pass, size_t* entry);
/** Reads up to `length` bytes of the entry, and waits for them. Fewer come only at its end, then 0, or -1 if
 * bytes of it are missing. */
HARBOR6_C_API int64_t harbor6_pass_read(harbor6_pass* pass, void* buffer, size_t length);
/** Ends the pass and returns how it ended, which the archive tells too: HARBOR6_ABORTED if before its end.
 * NULL is allowed. */
HARBOR6_C_API harbor6_status harbor6_pass_close(harbor6_pass* pass);

/* --- Expanding --- */

/** What happens where a file of that name exists. */
typedef enum harbor6_existing {
    HARBOR6_FAIL = 0,   /**< it stays, which is reported */
    HARBOR6_KEEP = 1,   /**< it stays */
    HARBOR6_REPLACE = 2 /**< the new file replaces it once it is complete; never a link or a device */
} harbor6_existing;

enum {
    HARBOR6_NO_TIMES = 1,      /**< files don't get the times that the archive states */
    HARBOR6_NO_ATTRIBUTES = 2, /**< nor the attributes read-only and executable */
    HARBOR6_KEEP_PARTIAL = 4,  /**< what came of an incomplete file stays: "NAME.partial" */
    HARBOR6_SYNC = 8           /**< when the call returns, all is on the disk */
};

/** How to expand: zeros are the usual way. */
typedef struct harbor6_expansion {
    void* context; /**< passed to the functions, which may be NULL */
    harbor6_existing existing;
    /** Whether the entry is wanted; NULL: all are. */
    int (*wants)(void* context, size_t entry);
    /** What became of one file: HARBOR6_OK, or why it was not written, with a text for the user. `path` is
     * that of the entry, relative to the folder. Nonzero ends the expansion before the next file. */
    int (*report)(void* context, const char* path, harbor6_status status, const char* text);
    uint32_t flags; /**< of those above, added up */
} harbor6_expansion;

/** Writes the wanted entries below `folder`, which is created if need be. Nothing is written outside of it,
 * whatever the archive says and whatever links are in it; a file gets its name once it is complete. With
 * `expansion` NULL, all entries are written and existing files stay. */
HARBOR6_C_API harbor6_status harbor6_expand(harbor6_archive* archive, const char* folder,
                                            const harbor6_expansion* expansion);

/* --- Finding --- */

/** An archive inside a file. */
typedef struct harbor6_found {
    const char* format; /**< valid while it is reported */
    uint64_t offset;    /**< from where the search began */
    uint64_t size;      /**< UINT64_MAX: unknown */
    int cut;            /**< the file ends inside it */
} harbor6_found;

/** Searches from the present position of `descriptor` to its end, in one pass that also reads pipes, and
 * reports each archive. Nonzero from `report` ends the search with HARBOR6_ABORTED. The status is
 * HARBOR6_INCOMPLETE if so many places look like archives that some of them were not tested. */
HARBOR6_C_API harbor6_status harbor6_find(const harbor6_formats* formats, int descriptor, void* context,
                                          int (*report)(void* context, const harbor6_found* found));
/** The same in bytes that the caller supplies. */
HARBOR6_C_API harbor6_status harbor6_find_source(const harbor6_formats* formats, const harbor6_source* source,
                                                 void* context,
                                                 int (*report)(void* context, const harbor6_found* found));

#ifdef __cplusplus
}
#endif

#endif
