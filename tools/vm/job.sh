#!/bin/sh
# One boot of the virtual instrument: the phase the host wrote beside this script on the job disk.
# Everything the host reads comes over the cut-point channel (/dev/ttyS1) as one line each.
phase=$(cat phase)
say() { printf '%s\n' "$*" > /dev/ttyS1; }
say "READY $phase $(cut -d' ' -f1 /proc/uptime)"
as_user() {
  setpriv --reuid=1000 --regid=1000 --init-groups \
    env -i HOME=/home/vtx PATH=/usr/local/bin:/usr/bin:/bin DISPLAY=:0 LANG=C.UTF-8 "$@"
}
stick() {
  modprobe vfat
  mount -t vfat -o "$1,uid=1000,gid=1000,fmask=0022,dmask=0022" /dev/vdb /media/usb || say "FAILED stick"
}
# The root image, read-only, as the instrument mounts it.
root_image() { mount -o ro /dev/vdd /mnt/root-ro || say "FAILED root image"; }
# The instrument starts its application at every power-up.
application() {
  out=$(cd /home/vtx/Code && as_user timeout 20 /home/vtx/Code/Application 2>&1 | head -c 200)
  status=$?
  printf '%s %s' "$status" "$out" | tr '\n' ' ' > /run/app
  say "APP $(cat /run/app)"
}
collect() { python3 /run/vtx-job/collect.py "$@" app=@/run/app; }
update() {
  Xvfb :0 -nolisten tcp -ac -screen 0 800x600x24 > /run/xvfb.log 2>&1 &
  i=0
  while [ ! -e /tmp/.X11-unix/X0 ] && [ $i -lt 150 ]; do sleep 0.2; i=$((i + 1)); done
  say "UPDATE $(cut -d' ' -f1 /proc/uptime)"
  cd /home/vtx/Code && as_user LD_PRELOAD=/usr/local/lib/vtx-step.so /home/vtx/Code/update > /run/update.log 2>&1
  status=$?
  tail -n 5 /run/update.log
  say "ENDED $status"
}

case $phase in
  probe) ;;
  setup)
    dpkg -i ./vtx-update.deb > /run/dpkg.log 2>&1 || { cat /run/dpkg.log; say "FAILED dpkg -i"; exit 1; }
    # The runtime link as on an instrument before its operating-system update: it names 6.0.21,
    # which is the system's own runtime under that name, so that its C++ programs still start.
    lib=/usr/lib/i386-linux-gnu
    own=$(readlink -f $lib/libstdc++.so.6)
    ln -sf "$own" $lib/libstdc++.so.6.0.21
    ln -sfn $lib/libstdc++.so.6.0.21 $lib/libstdc++.so.6
    install -o vtx -g vtx -m 755 Application.old /home/vtx/Code/Application
    touch -d '2019-03-05 14:12:00' /home/vtx/Code/Application
    install -d -o vtx -g vtx /home/vtx/Code/NEW
    install -o vtx -g vtx -m 644 Application.new /home/vtx/Code/NEW/Application
    install -o vtx -g vtx -m 644 instrument.log /home/vtx/Code/instrument.log
    touch -d '2019-03-05 14:00:00' /home/vtx/Code/instrument.log
    sync
    stick ro
    : > /run/app
    collect setup
    ;;
  e2e)
    root_image
    stick rw
    application
    if [ -e /var/lib/vtx-vm/updated ]; then collect second-boot; exit 0; fi
    mkdir -p /var/lib/vtx-vm && : > /var/lib/vtx-vm/updated && sync
    update
    ;;
  trial)
    root_image
    stick rw
    application
    update
    ;;
  check)
    # The root is mounted read-only: the kernel has replayed its journal, nothing repaired it.
    e2fsck -fn /dev/vda > /run/fsck 2>&1
    echo $? > /run/fsck.status
    stick ro
    application
    collect check fsck_status=@/run/fsck.status fsck=@/run/fsck
    ;;
esac
