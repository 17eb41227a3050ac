#pragma once

#include <cstdint>

// The attribute keys. Which of them an object has, its class decides. The odd spellings are part of the
// interface: hosts and formats use exactly these texts.

namespace harbor6::key {

inline constexpr char fInfo[] = "fInfo";
inline constexpr char fXInfo[] = "fXInfo";
inline constexpr char macBinaryHeader[] = "macBinaryHeader";
inline constexpr char symLink[] = "symLink";
inline constexpr char link[] = "link";
inline constexpr char numItems[] = "numItems";
inline constexpr char totalItems[] = "totalItems";
inline constexpr char pluralContent[] = "pluralContent";
inline constexpr char containsLocked[] = "containsLocked";
inline constexpr char containsEncrypted[] = "containsEncrypted";
inline constexpr char dInfo[] = "dInfo";
inline constexpr char dXInfo[] = "dXInfo";
inline constexpr char formatName[] = "formatName";
inline constexpr char longName[] = "longName";
inline constexpr char suffix[] = "suffix";
inline constexpr char isFile[] = "isFile";
inline constexpr char isFolder[] = "isFolder";
inline constexpr char isSegmented[] = "isSegmented";
inline constexpr char mimeType[] = "mimeType";
inline constexpr char expandsArchives[] = "expandsArchives";
inline constexpr char recoversArchives[] = "recoversArchives";
inline constexpr char createsArchives[] = "createsArchives";
inline constexpr char savesResources[] = "savesResources";
inline constexpr char macFormat[] = "macFormat";
inline constexpr char segmentSize[] = "segmentSize";
inline constexpr char compressionLevel[] = "compressionLevel";
inline constexpr char compressionLeast[] = "compressionLeast";
inline constexpr char compressionMost[] = "compressionMost";
inline constexpr char compressionDefault[] = "compressionDefault";
inline constexpr char compExtent[] = "compExtent";
inline constexpr char compExtentLeast[] = "compExtentLeast";
inline constexpr char compExtentMost[] = "compExtentMost";
inline constexpr char compExtentDefault[] = "compExtentDefault";
inline constexpr char compMethod[] = "compMethod";
inline constexpr char compMethodLeast[] = "compMethodLeast";
inline constexpr char compMethodMost[] = "compMethodMost";
inline constexpr char compMethodDefault[] = "compMethodDefault";
inline constexpr char minCompressionRatio[] = "minCompressionRatio";
inline constexpr char maxCompressionRatio[] = "maxCompressionRatio";
inline constexpr char compressionRatio[] = "compressionRatio";
inline constexpr char minCompressionSpeed[] = "minCompressionSpeed";
inline constexpr char maxCompressionSpeed[] = "maxCompressionSpeed";
inline constexpr char compressionSpeed[] = "compressionSpeed";
inline constexpr char minExpansionSpeed[] = "minExpansionSpeed";
inline constexpr char maxExpansionSpeed[] = "maxExpansionSpeed";
inline constexpr char expansionSpeed[] = "expansionSpeed";
inline constexpr char compressionMemory[] = "compressionMemory";
inline constexpr char expansionMemory[] = "expansionMemory";
inline constexpr char blockMode[] = "blockMode";
inline constexpr char filters[] = "filters";
inline constexpr char encryptArchive[] = "encryptArchive";
inline constexpr char encryptMethod[] = "encryptMethod";
inline constexpr char encryptMethodLeast[] = "encryptMethodLeast";
inline constexpr char encryptMethodMost[] = "encryptMethodMost";
inline constexpr char encryptMethodDefault[] = "encryptMethodDefault";
inline constexpr char keySize[] = "keySize";
inline constexpr char keySizeLeast[] = "keySizeLeast";
inline constexpr char keySizeMost[] = "keySizeMost";
inline constexpr char keySizeDefault[] = "keySizeDefault";
inline constexpr char encodeLevel[] = "encodeLevel";
inline constexpr char encodetLevelLeast[] = "encodetLevelLeast";
inline constexpr char encodeLevelMost[] = "encodeLevelMost";
inline constexpr char encodeLevelDefault[] = "encodeLevelDefault";
inline constexpr char encodeSubset[] = "encodeSubset";
inline constexpr char encodeOverhead[] = "encodeOverhead";
inline constexpr char redundancy[] = "redundancy";
inline constexpr char redundancyLevel[] = "redundancyLevel";
inline constexpr char redundancytLevelLeast[] = "redundancytLevelLeast";
inline constexpr char redundancyLevelMost[] = "redundancyLevelMost";
inline constexpr char redundancyLevelDefault[] = "redundancyLevelDefault";
inline constexpr char redundancyOverhead[] = "redundancyOverhead";
inline constexpr char blockSize[] = "blockSize";
inline constexpr char isFileSystem[] = "isFileSystem";
inline constexpr char fileType[] = "fileType";
inline constexpr char fileCreator[] = "fileCreator";
inline constexpr char providesEmptyFile[] = "providesEmptyFile";
inline constexpr char isText[] = "isText";
inline constexpr char preserveResourceFork[] = "preserveResourceFork";
inline constexpr char executable[] = "executable";
inline constexpr char maxThreads[] = "maxThreads";
inline constexpr char fileSizeBits[] = "fileSizeBits";
inline constexpr char selfExtracting[] = "selfExtracting";
inline constexpr char jpegRule[] = "jpegRule";
inline constexpr char jpegRuleLeast[] = "jpegRuleLeast";
inline constexpr char jpegRuleMost[] = "jpegRuleMost";
inline constexpr char jpegRuleDefault[] = "jpegRuleDefault";
inline constexpr char jpegLevel[] = "jpegLevel";
inline constexpr char jpegLevelLeast[] = "jpegLevelLeast";
inline constexpr char jpegLevelMost[] = "jpegLevelMost";
inline constexpr char jpegLDefault[] = "jpegLDefault";
inline constexpr char thumbNails[] = "thumbNails";
inline constexpr char macAttributes[] = "macAttributes";
inline constexpr char createsIndex[] = "createsIndex";
inline constexpr char maxVersion[] = "maxVersion";
inline constexpr char recompressArchives[] = "recompressArchives";
inline constexpr char name[] = "name";
inline constexpr char pathName[] = "pathName";
inline constexpr char modTime[] = "modTime";
inline constexpr char createTime[] = "createTime";
inline constexpr char backupTime[] = "backupTime";
inline constexpr char accessTime[] = "accessTime";
inline constexpr char compressedSize[] = "compressedSize";
inline constexpr char uncompressedSize[] = "uncompressedSize";
inline constexpr char locked[] = "locked";
inline constexpr char encrypted[] = "encrypted";
inline constexpr char comment[] = "comment";
inline constexpr char fileSystemItem[] = "fileSystemItem";
inline constexpr char password[] = "password";
inline constexpr char newPassword[] = "newPassword";
inline constexpr char fsSpec[] = "fsSpec";
inline constexpr char userID[] = "userID";
inline constexpr char groupID[] = "groupID";
inline constexpr char userName[] = "userName";
inline constexpr char groupName[] = "groupName";
inline constexpr char unixMode[] = "unixMode";
inline constexpr char win32Attributes[] = "win32Attributes";
inline constexpr char readOnly[] = "readOnly";
inline constexpr char archive[] = "archive";
inline constexpr char hidden[] = "hidden";
inline constexpr char system[] = "system";
inline constexpr char directory[] = "directory";

// Of items with details (Archive::Details::all): which of the archive's streams holds the file's
// data, counted from 0, and where in it they begin.
inline constexpr char folderIndex[] = "folderIndex";
inline constexpr char folderOffset[] = "folderOffset";

// No keys: reserved texts.
inline constexpr char File[] = "File";
inline constexpr char unknown[] = "unknown";

} // namespace harbor6::key

// The ids that keys have in the indexes: 1 to 27 for all items, from 0x1001 on for files, from 0x3001 on for
// folders, from 0x4001 on for formats.

namespace harbor6::key_id {

inline constexpr std::uint16_t unknown = 0xFFFF; ///< the index doesn't contain the key

inline constexpr std::uint16_t name = 1;
inline constexpr std::uint16_t modTime = 3;
inline constexpr std::uint16_t compressedSize = 7;
inline constexpr std::uint16_t uncompressedSize = 8;
inline constexpr std::uint16_t fileSystemItem = 12;
inline constexpr std::uint16_t reservedItemKey = 27;
inline constexpr std::uint16_t fInfo = 0x1001;
inline constexpr std::uint16_t fXInfo = 0x1002;
inline constexpr std::uint16_t win32Attributes = 0x1010;
inline constexpr std::uint16_t readOnly = 0x1011;
inline constexpr std::uint16_t hidden = 0x1012;
inline constexpr std::uint16_t system = 0x1013;
inline constexpr std::uint16_t archive = 0x1014;
inline constexpr std::uint16_t pathName = 0x1020;
inline constexpr std::uint16_t compMethod = 0x1021;
inline constexpr std::uint16_t folderIndex = 0x1022;
inline constexpr std::uint16_t folderOffset = 0x1023;
inline constexpr std::uint16_t numItems = 0x3001;
inline constexpr std::uint16_t pluralContent = 0x3002;
inline constexpr std::uint16_t containsLocked = 0x3003;
inline constexpr std::uint16_t containsEncrypted = 0x3004;
inline constexpr std::uint16_t dInfo = 0x3005;
inline constexpr std::uint16_t dXInfo = 0x3006;
inline constexpr std::uint16_t totalItems = 0x3007;
inline constexpr std::uint16_t formatName = 0x4001;
inline constexpr std::uint16_t suffix = 0x4002;
inline constexpr std::uint16_t isFile = 0x4003;
inline constexpr std::uint16_t isFolder = 0x4004;
inline constexpr std::uint16_t expandsArchives = 0x4005;
inline constexpr std::uint16_t recoversArchives = 0x4006;
inline constexpr std::uint16_t createsArchives = 0x4007;
inline constexpr std::uint16_t compressionLevel = 0x4008;
inline constexpr std::uint16_t compressionLeast = 0x4009;
inline constexpr std::uint16_t compressionMost = 0x400A;
inline constexpr std::uint16_t isFileSystem = 0x400B;
inline constexpr std::uint16_t mimeType = 0x400C;
inline constexpr std::uint16_t isSegmented = 0x400D;
inline constexpr std::uint16_t compressionDefault = 0x400E;
inline constexpr std::uint16_t fileType = 0x400F;
inline constexpr std::uint16_t fileCreator = 0x4010;
inline constexpr std::uint16_t providesEmptyFile = 0x4011;
inline constexpr std::uint16_t isText = 0x4012;
inline constexpr std::uint16_t savesResources = 0x4033;
inline constexpr std::uint16_t macFormat = 0x4034;
inline constexpr std::uint16_t longName = 0x4035;
inline constexpr std::uint16_t preserveResourceFork = 0x4042;
inline constexpr std::uint16_t executable = 0x4043;
inline constexpr std::uint16_t fileSizeBits = 0x4045;
inline constexpr std::uint16_t macAttributes = 0x4050;
inline constexpr std::uint16_t createsIndex = 0x4051;

} // namespace harbor6::key_id
