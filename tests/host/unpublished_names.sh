#!/bin/bash
# The plug-in uses published names of the host's interface only; the others stay behind host/*adapter.h, where a build
# against the vendor's headers can mend them.
# Usage: unpublished_names.sh PLUGIN_FOLDER
set -uo pipefail
names='tmResult_Success|tmResult_ErrorUnknown|playmode_Stopped|playmode_Playing|playmode_Scrubbing|kAppInfo_[A-Za-z0-9]*'
names+='|pmAudioSettings|pmAudioRange|PrSDKPlayModuleAudioSuite|InitHostAudio|StartAudio|StopAudio'
names+='|PrSDK(Transmit|PlayModule|PlayModuleAudioSuite|StreamLabel)\.h|kPrSDK[A-Za-z]*SuiteVersion'
[ -f "$1/Quillo_TransmitInstance.h" ] || { echo "no plug-in in $1"; exit 1; }
if grep -rnwE "$names" "$1"; then
    exit 1
fi
# Without the suffix these four characters would be another format in the vendor's headers.
if grep -rnw PrPixelFormat_VUYA_4444_8u "$1"; then
    exit 1
fi
