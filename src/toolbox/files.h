// File Manager, as the shell uses it: file locations, the catalogue, Finder information, aliases, data forks.
//
// A location is a volume reference, a folder id and a leaf name. The volume is the first component of the
// POSIX path; its root is folder 2, whose parent is folder 1. References and ids hold for this process only.
// A ":" in a Linux file name becomes byte 30 in names and HFS paths. A leaf of more than 63 bytes gets a
// unique shortened name, from which every procedure here finds the whole name again.
//
// Result codes: fnfErr no such file, dirNFErr no such folder, nsvErr no such volume, bdNamErr the name or
// path cannot be one or is too long (a path has less than 4096 bytes), dupFNErr the file is there already,
// permErr no permission, wPrErr not writable, ioErr any other failure of the host.
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

// What a catalogue call asks for and answers. ioFDirIndex > 0 asks for the entry of that index in folder
// ioDirID, ordered by name with ASCII case folded, then by byte; 0 asks for the entry named ioNamePtr; < 0
// asks for the folder ioDirID itself.
struct CInfoPBRec {
    unsigned char *ioNamePtr; // length-prefixed, room for 64 bytes; in: a name or an HFS path; out: the leaf
    std::int16_t ioVRefNum;
    std::int32_t ioFDirIndex;
    std::uint8_t ioFlAttrib; // out
    FInfo ioFlFndrInfo;      // out, files
    std::int32_t ioDirID;    // in: the folder; out: a folder's own id
    std::int32_t ioFlParID;  // out: id of the folder that holds the entry
};

// Makes the location of NAME, a leaf or an HFS path; a relative one is taken in folder DIR_ID of volume VREF,
// and null or "" names that folder itself. fnfErr when only the last component is missing, in which case SPEC
// is filled all the same; dirNFErr, nsvErr and bdNamErr otherwise.
OSErr FSMakeFSSpec(std::int16_t vref, std::int32_t dir_id, const char *name, FSSpec *spec);
// Read and set the type and creator of a file; without a stamp they are judged from its contents. Setting
// stamps the file's extended attributes and ignores the flags. fnfErr for a folder and where nothing is.
OSErr FSpGetFInfo(const FSSpec *spec, FInfo *info);
OSErr FSpSetFInfo(const FSSpec *spec, const FInfo *info);
// Looks an entry of the catalogue up and fills the block. fnfErr when there is no entry of that name or index
// (index 1 reads the folder anew), dirNFErr when the folder is missing or cannot be read, or an error of the
// name as in FSMakeFSSpec.
OSErr PBGetCatInfoSync(CInfoPBRec *block);
// Looks an entry up as PBGetCatInfoSync does, but reads neither attributes nor contents: names, ids, the
// folder bit and the alias flag are filled, type and creator are 0.
OSErr PBGetCatNameSync(CInfoPBRec *block);
// 1 when the path names a file that is there, else 0; a folder counts as absent, and so does a file directly
// in the root folder. The file is not read. The HFS path begins with a volume; the POSIX path is absolute.
int FSFileExists(const char *hfs_path);
int PosixFileExists(const char *posix_path);
// Looks an entry up as PBGetCatInfoSync does, but knows files only: by index it passes folders over, and a
// folder's name is fnfErr. By name it also sets the bit that tells whether another program has the file open.
OSErr PBHGetFInfoSync(CInfoPBRec *block);
// Makes the reference of something that is there, from its location: the POSIX path, held in REF. fnfErr when
// nothing is there, or an error of the location.
OSErr FSpMakeFSRef(const FSSpec *spec, FSRef *ref);
// Copies the POSIX path of REF into ROOM bytes at PATH, NUL included: fnfErr for an empty reference, bdNamErr
// when it does not fit; PATH is then empty.
OSErr FSRefMakePath(const FSRef *ref, char *path, std::size_t room);
// Makes the location of an absolute POSIX path, with the results of FSMakeFSSpec.
OSErr FSPathMakeSpec(const char *posix_path, FSSpec *spec);
// Replaces SPEC by the location that it leads to when it is a symbolic link: one link further, or to the end
// when RESOLVE_CHAINS is 1. WAS_ALIASED and TARGET_IS_FOLDER become 1 or 0. fnfErr when the target is
// missing.
OSErr ResolveAliasFile(FSSpec *spec, int resolve_chains, int *target_is_folder, int *was_aliased);

// Creates an empty file with that type and creator. dupFNErr when something is there already, dirNFErr when
// the folder is missing, bdNamErr directly in the root folder.
OSErr FSpCreate(const FSSpec *spec, OSType creator, OSType type);
// Opens a file for reading ('r') or for reading and writing ('w'). REFERENCE, above 0, is for the calls below
// until FSClose; it is 0 on failure. fnfErr for anything but a regular file, fnOpnErr when none is left.
OSErr FSpOpenDF(const FSSpec *spec, char permission, std::int16_t *reference);
// Read and write COUNT bytes from the mark on, which moves; COUNT becomes the number of bytes that went.
// FSRead gives eofErr when fewer came, FSWrite gives wPrErr for a file opened for reading. fnOpnErr for a
// reference that is not open, here and below.
OSErr FSRead(std::int16_t reference, long *count, void *buffer);
OSErr FSWrite(std::int16_t reference, long *count, const void *buffer);
// Cuts or extends the file to LENGTH bytes; a mark behind the end moves to the end.
OSErr SetEOF(std::int16_t reference, long length);
// Closes the file and gives the reference back.
OSErr FSClose(std::int16_t reference);
// Deletes a file. fnfErr for a folder and where nothing is.
OSErr FSpDelete(const FSSpec *spec);
// Opens a file as fopen does, with a mode of fopen: null with errno set when it fails. It refuses folders,
// and pipes, which a program can wait on for ever. Programs started later do not inherit the file; the caller
// closes it with fclose.
std::FILE *OpenPosixFile(const char *posix_path, const char *mode);

// Removes the transcripts of tools that have gone, which nobody will read any more. One that is younger than
// a minute stays, since its shell may be about to read it.
void RemoveStaleTranscripts();
// Finds a standard folder of the host: 'pref' preferences, 'asup' application support, 'cusr' the
// person's home, 'temp' temporary items, 'font' fonts, 'trns' the tools' transcripts. CREATE 1 makes it when
// it is missing. VREF and DIR_ID are 0 on failure: fnfErr for another kind or a missing folder, permErr when
// the temporary folder is not the user's own.
OSErr FindFolder(OSType kind, int create, std::int16_t *vref, std::int32_t *dir_id);

// Turn an HFS path that begins with a volume, or a location, into a POSIX path: 1, or 0 (and an empty path)
// when it cannot be one or does not fit. Nothing need be there.
int HFSPathToPosix(const char *hfs_path, BoundedBuffer &posix_path);
int FSpToPosix(const FSSpec *spec, BoundedBuffer &posix_path);

// Turns a length-prefixed name into text. A shortened name comes out whole where TEXT has room for the whole.
void from_pascal(const unsigned char *name, BoundedBuffer &text);

} // namespace quillon

#endif
