// listedit.h - mkmedium's options that read and change install lists in place, for release
// engineers who look into an installation or make a medium with faults of their own. Both are
// built on the list module (ilst); every field is read and written through it.
//
//   mkmedium --uninstall-list FILE
//     prints UNINST.LST's records to standard output in UTF-8, one a line: the kind (0 file,
//     1 directory, 2 key under HKEY_CLASSES_ROOT, 3 key under HKEY_LOCAL_MACHINE), a tab, the
//     path. Exit 0; 1 when the file cannot be read or ends in part of a record (the whole
//     records are printed first, the fault goes to standard error).
//
//   mkmedium --uninstall-write FILE
//     writes FILE anew from lines of that form read from standard input (a trimmed or repaired
//     list). Exit 0; 1 when FILE cannot be written, 2 for a line of another form or a path
//     longer than a record holds (nothing is written then).
//
//   mkmedium --edit LIST EDIT...
//     changes fields of the DISKLIST.LST file LIST, the edits in the order given:
//       FIELD=VALUE            a field of the header: count, packed (numbers), text
//       RECORD:FIELD=VALUE     a field of a file record: name, stored, directory, description
//                              (texts), size, disk (numbers; the disk as the installer names it,
//                              1 for the first)
//     RECORD is the installed name of the first record that has it, #N for record N (1 for the
//     first), or "last". A text is UTF-8 (converted to Windows-1250) in which \xHH stands for the
//     byte HH; a text as long as its whole field (17 bytes for a name, 82 for a description and
//     the header's text) fills it to the last byte and leaves no terminating zero, as a damaged
//     medium may. Exit 0; 1 when the list cannot be read or written, 2 for an edit that names
//     no field or record, or a value that does not fit (the list is then left as it was).
#ifndef KX_MEDIUM_LISTEDIT_H
#define KX_MEDIUM_LISTEDIT_H

int medium_uninstall_list_main(int argc, char **argv);   // argv: FILE
int medium_uninstall_write_main(int argc, char **argv);  // argv: FILE
int medium_edit_main(int argc, char **argv);             // argv: LIST EDIT...

#endif
