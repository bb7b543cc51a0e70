#!/bin/sh
# The update as a plain shell script: the steps of the program's update, in its order, with the
# same commands and the same two 2-second pauses, but without a screen. It is the yardstick of the
# whole-update time (bench/run-bench); run it only inside tools/instrument-sandbox. It stops at the
# first failure with the step code as its exit status (1 for the copy failures without one).
code=/home/vtx/Code
usb=/media/usb
lib=/usr/lib/i386-linux-gnu
secret=/home/vtx/bin/VtxSecret

# Every copy as the program makes it: into a partial name beside the destination, with the mode,
# owner and group of the file it replaces, flushed to the disk, renamed over the real name, and
# the folder flushed.
copy() {
  dest=$2; [ -d "$dest" ] && dest=$dest/${1##*/}
  part=${dest%/*}/.vtx-partial-copy
  rm -f "$part"
  cp "$1" "$part" &&
    { [ ! -f "$dest" ] || { chown --reference="$dest" "$part" && chmod --reference="$dest" "$part"; }; } &&
    sync "$part" && mv -f "$part" "$dest" && sync "${dest%/*}" || { rm -f "$part"; return 1; }
}

sleep 2

# The newest log file of the code folder; its lines are CR LF.
log=$(ls -t "$code"/*.log 2>/dev/null | head -n 1)
[ -n "$log" ] || exit 8
line() { printf '%s\r\n' "$1" >> "$log"; }
prefix=$(date '+%m/%d/%Y %I:%M %p')
if grep -qs '^DateFormat = EU' "$code/settings.vtx"; then prefix=$(date '+%d/%m/%Y %H:%M'); fi

if [ ! -e "$usb/update/zip" ]; then
  line "$prefix no zip file on USB"
elif [ -e "$code/zip" ]; then
  line "$prefix zip already copied"
else
  copy "$usb/update/zip" "$code/zip" || { line "$prefix could not copy auxillary files"; exit 1; }
  line "$prefix auxillary files copied"
fi

line "*** Performing systems check ***"
readlink "$lib/libstdc++.so.6" > /dev/null || { line "FAIL - cannot read link version"; exit 16; }
line "version read done"
if [ "$(readlink "$lib/libstdc++.so.6")" = "$lib/libstdc++.so.6.0.22" ]; then
  line "version is correct, starting normal upgrade procedure"
else
  line "version incorrect - updating OS"
  [ -e "$usb/update/libstdc++.so.6.0.22" ] || exit 18
  line "prerequisites exists on USB"
  [ -e "$secret" ] || exit 18
  line "prerequisites exists on disk"
  "$secret" "mount -o remount,rw /mnt/root-ro" || exit 18
  line "remounted OS"
  "$secret" "cp $usb/update/libstdc++.so.6.0.22 /mnt/root-ro$lib/libstdc++.so.6.0.22" || exit 18
  line "copied prerequisites to OS"
  "$secret" "ln -sf $lib/libstdc++.so.6.0.22 /mnt/root-ro$lib/libstdc++.so.6" || exit 18
  line "link changed"
fi

[ -f "$code/Application" ] || exit 1
backup="$code/Old/Application_$(date -r "$code/Application" '+%d%m%Y_%H%M')"
mkdir -p "$code/Old" || exit 3
copy "$code/Application" "$backup" || exit 4
line "$prefix Old version backed up to $backup"

new=Application code_check=15
if [ -e /opt/librime/ ]; then new=Application_Chinese code_check=14; fi
# The program's library check word for word, run by /bin/sh as the program runs it; its inverted
# sense is the program's too.
if [[ $(ldd $code/NEW/$new | grep not | wc -l) -eq 0 ]] 2>/dev/null; then exit $code_check; fi
copy "$code/NEW/$new" "$code/Application" || exit 6
rm -rf "$code/NEW" || exit 7
line "$prefix New version copied"

if [ -e "$usb/jfonts.tgz" ] && [ ! -e /home/vtx/jfonts.tgz ]; then
  line "$prefix Copying $usb/jfonts.tgz to /home/vtx"
  copy "$usb/jfonts.tgz" /home/vtx || { line "$prefix could not copy font package"; exit 1; }
  printed=$(cd /home/vtx; tar xzf jfonts.tgz)
  [ -z "$printed" ] || { line "$prefix Unpack error : $printed"; exit 1; }
  [ -e /home/vtx/jfonts ] || { line "$prefix could not unpack font package"; exit 1; }
fi

line "$prefix Application started"
sync "$log"
copy "$log" "$usb/${log##*/}" || exit 13

sleep 2
sync
"$secret" reboot
exit 0
