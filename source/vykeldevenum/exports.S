// The export directory for lld, because the one that lld makes begins with an empty entry. The names are in
// the order of their bytes, and the ordinals are those that GNU's linker gives.
    .section .edata, "dr"
    .long 0, 0, 0                   // flags, time, version
    .rva name
    .long 1, 3, 3                   // first ordinal, number of functions, number of names
    .rva functions
    .rva names
    .rva ordinals
functions:
    .rva vykeldevenum_finalize
    .rva vykeldevenum_getAllKelDevices
    .rva vykeldevenum_initialize
names:
    .rva finalize
    .rva getAllKelDevices
    .rva initialize
ordinals:
    .short 0, 1, 2
name:
    .asciz "vykeldevenum.dll"
finalize:
    .asciz "vykeldevenum_finalize"
getAllKelDevices:
    .asciz "vykeldevenum_getAllKelDevices"
initialize:
    .asciz "vykeldevenum_initialize"
