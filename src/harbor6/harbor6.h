#pragma once

// All that a host or a format usually needs.

#include "harbor6/groundwork/exception.h"
#include "harbor6/groundwork/text.h"
#include "harbor6/hosts/archive_reader.h"
#include "harbor6/hosts/disk_folder.h"
#include "harbor6/hosts/memory_folder.h"
#include "harbor6/hosts/registry.h"
#include "harbor6/hosts/tally.h"
#include "harbor6/hosts/target_client.h"
#include "harbor6/model/archive.h"
#include "harbor6/model/classifier.h"
#include "harbor6/model/content_pass.h"
#include "harbor6/model/file.h"
#include "harbor6/model/folder.h"
#include "harbor6/model/format.h"
#include "harbor6/plugin.h"
#include "harbor6/shell/client_interface.h"
#include "harbor6/shell/harbor_shell.h"
#include "harbor6/stream/endian_input.h"
#include "harbor6/stream/memory_input.h"
#include "harbor6/stream/positioned_input.h"
