// File Manager, as the shell uses it: file locations, the catalogue, Finder information, aliases, data forks.
//
// A location is a volume reference, a folder id and a leaf name. Volume references and folder ids are handed
// out per process; the volume is the first component of the POSIX path and a volume's root is folder 2 (its
// parent is folder 1). A ":" in a Linux file name stands as byte 30 in names and HFS paths. A leaf of more
// than 63 bytes stands under a unique shortened name that every call here maps back.
#ifndef QUILLON_TOOLBOX_FILES_H
#define QUILLON_TOOLBOX_FILES_H

#include <cstddef>
#include <cstdio>

#include "toolbox/bounded.h"
#include "toolbox/types.h"

namespace quillon {

struct FSSpec {
    std::int16_t vRefNum;
    std::int32_t parID;
    unsigned char name[64]; // length-prefixed
};

struct FSRef {
    char path[4096]; // POSIX path, NUL-terminated
};

struct FInfo {
    OSType fdType;
    OSType fdCreator;
    std::uint16_t fdFlags;
};
enum : std::uint16_t { kIsAlias = 0x8000 };

// Catalogue attribute bits.
enum : std::uint8_t { kioFlAttribDir = 0x10, kioFlAttribFileOpen = 0x80 };

// The catalogue call's parameter block. ioFDirIndex > 0: the entry of that index in folder ioDirID (by name,
// ASCII case folded, then by byte); 0: the entry named ioNamePtr; < 0: the folder ioDirID itself.
struct CInfoPBRec {
    unsigned char *ioNamePtr; // length-prefixed, room for 64 bytes; in and out. In: a name or an HFS path
    std::int16_t ioVRefNum;
    std::int32_t ioFDirIndex;
    std::uint8_t ioFlAttrib; // out
    FInfo ioFlFndrInfo;      // out, files
    std::int32_t ioDirID;    // in: the folder; out: a folder's own id
    std::int32_t ioFlParID;  // out: id of the folder that holds the entry
};

// NAME is a leaf, or an HFS path; relative names are taken in folder DIR_ID of volume VREF. 0; fnfErr when
// only the last component is missing (SPEC is filled all the same); dirNFErr, nsvErr, bdNamErr otherwise.
OSErr FSMakeFSSpec(std::int16_t vref, std::int32_t dir_id, const char *name, FSSpec *spec);
OSErr FSpGetFInfo(const FSSpec *spec, FInfo *info);
OSErr FSpSetFInfo(const FSSpec *spec, const FInfo *info);
OSErr PBGetCatInfoSync(CInfoPBRec *block);
// As PBGetCatInfoSync without type and creator: names, ids, the folder bit and the alias flag only. Reads no
// attributes and no contents.
OSErr PBGetCatNameSync(CInfoPBRec *block);
// 1 when the HFS path names a file; a folder counts as absent. One look at the disk, nothing is read.
int FSFileExists(const char *hfs_path);
int PosixFileExists(const char *posix_path); // absolute; a file directly in the root folder counts as absent
// Files only: folders are passed over by index. By name the file-is-open bit is set as well.
OSErr PBHGetFInfoSync(CInfoPBRec *block);
OSErr FSpMakeFSRef(const FSSpec *spec, FSRef *ref);
OSErr FSRefMakePath(const FSRef *ref, char *path, std::size_t room);
OSErr FSPathMakeSpec(const char *posix_path, FSSpec *spec);
OSErr ResolveAliasFile(FSSpec *spec, int resolve_chains, int *target_is_folder, int *was_aliased);

// Data forks. PERMISSION: 'r' reading, 'w' reading and writing. FSRead returns eofErr when fewer bytes came
// than COUNT asked; COUNT then holds what came.
OSErr FSpCreate(const FSSpec *spec, OSType creator, OSType type);
OSErr FSpOpenDF(const FSSpec *spec, char permission, std::int16_t *reference);
OSErr FSRead(std::int16_t reference, long *count, void *buffer);
OSErr FSWrite(std::int16_t reference, long *count, const void *buffer);
OSErr SetEOF(std::int16_t reference, long length);
OSErr FSClose(std::int16_t reference);
OSErr FSpDelete(const FSSpec *spec);
// The standard library's open: null with errno set when it fails. Refuses folders, and pipes, which a program
// can wait on for ever; programs started later do not inherit the file.
std::FILE *OpenPosixFile(const char *posix_path, const char *mode);

// Folders of the host. 'pref' Preferences, 'asup' Application Support, 'temp' temporary items, 'font' fonts,
// 'trns' the tools' transcripts. CREATE makes the folder when it is missing.
// Removes the transcripts of tools that have gone, which nobody will read any more. One that is younger than
// a minute stays: its shell may be about to read it.
void RemoveStaleTranscripts();
OSErr FindFolder(OSType kind, int create, std::int16_t *vref, std::int32_t *dir_id);

// The POSIX path of an HFS path or a location; 0 when it cannot be one or does not fit. Nothing need be
// there.
int HFSPathToPosix(const char *hfs_path, BoundedBuffer &posix_path);
int FSpToPosix(const FSSpec *spec, BoundedBuffer &posix_path);

// Length-prefixed names to and from text. A text of more than 63 bytes goes in under its shortened name and
// comes out whole, where TEXT has room for it. 0, and an empty name, when the text cannot be a leaf.
int to_pascal(const char *text, unsigned char (&name)[64]);
void from_pascal(const unsigned char *name, BoundedBuffer &text);

} // namespace quillon

#endif
