// What the library asks of the system, made to fail when a plan says so. The linker leads its calls here.
#include <algorithm>
#include <cerrno>
#include <clocale>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <pthread.h>
#include <sys/stat.h>
#include <unistd.h>

#include "fault_plan.h"

namespace {

bool fails(unsigned kind, int code) {
    if (!fault_plan::fails(kind)) return false;
    errno = code;
    return true;
}
bool file_fails(int code) { return fails(fallible::file, code); }

thread_local std::FILE* broken = nullptr;  // a stream from which reading has failed

}  // namespace

extern "C" {
decltype(fopen) __real_fopen;
decltype(fread) __real_fread;
decltype(ferror) __real_ferror;
decltype(fwrite) __real_fwrite;
decltype(fflush) __real_fflush;
decltype(fclose) __real_fclose;
decltype(vfprintf) __real_vfprintf;
int __real_open(const char*, int, ...);
decltype(write) __real_write;
decltype(close) __real_close;
decltype(fchmod) __real_fchmod;
decltype(stat) __real_stat;
decltype(lstat) __real_lstat;
decltype(realpath) __real_realpath;
decltype(access) __real_access;
decltype(rename) __real_rename;
decltype(unlink) __real_unlink;
decltype(setlocale) __real_setlocale;
decltype(pthread_create) __real_pthread_create;
decltype(pthread_join) __real_pthread_join;

std::FILE* __wrap_fopen(const char* path, const char* mode) {
    return file_fails(EMFILE) ? nullptr : __real_fopen(path, mode);
}
std::size_t __wrap_fread(void* into, std::size_t size, std::size_t count, std::FILE* from) {
    if (!file_fails(EIO)) return __real_fread(into, size, count, from);
    broken = from;
    return 0;
}
int __wrap_ferror(std::FILE* stream) { return stream == broken ? 1 : __real_ferror(stream); }
std::size_t __wrap_fwrite(const void* from, std::size_t size, std::size_t count, std::FILE* to) {
    return file_fails(ENOSPC) ? 0 : __real_fwrite(from, size, count, to);
}
int __wrap_vfprintf(std::FILE* to, const char* format, std::va_list arguments) {
    return file_fails(ENOSPC) ? -1 : __real_vfprintf(to, format, arguments);
}
int __wrap_fflush(std::FILE* stream) { return file_fails(ENOSPC) ? EOF : __real_fflush(stream); }
int __wrap_fclose(std::FILE* stream) {
    broken = nullptr;
    const bool failing = file_fails(ENOSPC);
    const int status = __real_fclose(stream);
    return failing ? EOF : status;
}
int __wrap_open(const char* path, int flags, unsigned mode) {
    return file_fails(EACCES) ? -1 : __real_open(path, flags, mode);
}
// A little at a time, as it may.
ssize_t __wrap_write(int file, const void* from, std::size_t size) {
    return file_fails(ENOSPC) ? -1 : __real_write(file, from, std::min<std::size_t>(size, 500));
}
int __wrap_close(int file) {
    const bool failing = file_fails(EIO);
    const int status = __real_close(file);
    return failing ? -1 : status;
}
int __wrap_fchmod(int file, mode_t mode) { return file_fails(EPERM) ? -1 : __real_fchmod(file, mode); }
int __wrap_stat(const char* path, struct stat* found) {
    return file_fails(EACCES) ? -1 : __real_stat(path, found);
}
int __wrap_lstat(const char* path, struct stat* found) {
    return file_fails(EACCES) ? -1 : __real_lstat(path, found);
}
char* __wrap_realpath(const char* path, char* resolved) {
    return file_fails(EACCES) ? nullptr : __real_realpath(path, resolved);
}
int __wrap_access(const char* path, int mode) { return file_fails(EACCES) ? -1 : __real_access(path, mode); }
int __wrap_rename(const char* from, const char* to) {
    return file_fails(EXDEV) ? -1 : __real_rename(from, to);
}
int __wrap_unlink(const char* path) { return file_fails(EBUSY) ? -1 : __real_unlink(path); }
char* __wrap_setlocale(int category, const char* name) {
    return fails(fallible::locale, ENOENT) ? nullptr : __real_setlocale(category, name);
}
int __wrap_pthread_create(pthread_t* thread, const pthread_attr_t* how, void* (*run)(void*), void* given) {
    return fault_plan::fails(fallible::thread) ? EAGAIN : __real_pthread_create(thread, how, run, given);
}
int __wrap_pthread_join(pthread_t thread, void** result) {
    const bool failing = fault_plan::fails(fallible::thread);
    const int status = __real_pthread_join(thread, result);
    return failing ? ESRCH : status;
}
}
