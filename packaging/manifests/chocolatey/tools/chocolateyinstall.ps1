$ErrorActionPreference = 'Stop'
Install-ChocolateyPackage -PackageName 'quill' -FileType 'exe' -SilentArgs '/S /AllUsers' `
    -Url '@SETUP_URL@' -Checksum '@SETUP_SHA256@' -ChecksumType 'sha256' -ValidExitCodes @(0)
