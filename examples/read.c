/* Lists an archive, then prints one of its files: read ARCHIVE [PATH] */
#include <harbor6/c.h>

#include <stdio.h>

static int fail(const harbor6_archive *archive) {
    fprintf(stderr, "%s\n", harbor6_error(archive));
    return 1;
}

static void list(const harbor6_archive *archive) {
    for (size_t i = 0; i < harbor6_count(archive); ++i) {
        harbor6_time time = {0, 0, 0, 0, 0, 0};
        harbor6_modified(archive, i, &time);
        printf("%10llu  %04d-%02d-%02d  %s\n", (unsigned long long)harbor6_size(archive, i), time.year,
               time.month, time.day, harbor6_path(archive, i));
    }
}

static int print(harbor6_archive *archive, const char *path) {
    char piece[4096];
    int64_t came;
    size_t entry;
    harbor6_stream *stream;
    if (harbor6_lookup(archive, path, &entry) != HARBOR6_OK)
        return fail(archive);
    if (harbor6_open_entry(archive, entry, 1u << 30, &stream) != HARBOR6_OK) {
        harbor6_stream_close(stream);
        return fail(archive);
    }
    while ((came = harbor6_stream_read(stream, piece, sizeof piece)) > 0)
        fwrite(piece, 1, (size_t)came, stdout);
    harbor6_stream_close(stream);
    return came < 0;
}

int main(int count, char **arguments) {
    int status;
    harbor6_archive *archive = NULL;
    harbor6_formats *formats = harbor6_formats_new();
    if (count < 2 || !formats)
        return 2;
    if (harbor6_formats_load(formats, NULL) != HARBOR6_OK)
        fprintf(stderr, "%s\n", harbor6_formats_error(formats));
    status = harbor6_open_path(formats, arguments[1], &archive) != HARBOR6_OK;
    if (status)
        fail(archive);
    else if (count == 2)
        list(archive);
    else
        status = print(archive, arguments[2]);
    harbor6_close(archive);
    harbor6_formats_free(formats);
    return status;
}
