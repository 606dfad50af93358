#!/usr/bin/env perl
# Writes duct.def and duct.res with veltool. Both contain the command data of
# duct.vel, and the coordinates and elements of a straight duct. duct.res also has
# pressure and axial velocity at three times.
#
#     examples/make-containers.pl [VELTOOL] [FOLDER]
#
# The fields come from a textbook formula for a developing flow, not from a
# solver. The same call always gives the same values.
use strict;
use warnings;
use File::Basename qw(dirname);

my $veltool = shift // 'veltool';
my $folder  = shift // dirname($0);
my $setup   = dirname($0) . '/duct.vel';

# Nodes along the duct, across and up; metres.
my @nodes  = (11, 5, 5);
my @length = (1.0, 0.1, 0.1);

sub run {
    system($veltool, @_) == 0 or die "make-containers.pl: veltool @_ failed\n";
}

sub put {
    my ($file, $what, $where, $when, $type, @values) = @_;
    open(my $pipe, '|-', $veltool, 'ds', 'write', $file, $what, $where, $when, $type,
        '--format', 'u5') or die "make-containers.pl: $veltool: $!\n";
    print {$pipe} "$_\n" for @values;
    close($pipe) or die "make-containers.pl: veltool ds write $file $what failed\n";
}

sub node { my ($i, $j, $k) = @_; return 1 + $i + $nodes[0] * ($j + $nodes[1] * $k) }

my (@x, @y, @z, @elements);
for my $k (0 .. $nodes[2] - 1) {
    for my $j (0 .. $nodes[1] - 1) {
        for my $i (0 .. $nodes[0] - 1) {
            push @x, $length[0] * $i / ($nodes[0] - 1);
            push @y, $length[1] * $j / ($nodes[1] - 1);
            push @z, $length[2] * $k / ($nodes[2] - 1);
            next if $i == $nodes[0] - 1 || $j == $nodes[1] - 1 || $k == $nodes[2] - 1;
            push @elements, map { node($i + $_->[0], $j + $_->[1], $k + $_->[2]) }
                [0, 0, 0], [1, 0, 0], [1, 1, 0], [0, 1, 0], [0, 0, 1], [1, 0, 1], [1, 1, 1], [0, 1, 1];
        }
    }
}

my ($def, $res) = map { "$folder/duct.$_" } qw(def res);
unlink $def, $res;
put($def, 'GRID/X', 'ZONE 1', 0, 'DBLE', @x);
put($def, 'GRID/Y', 'ZONE 1', 0, 'DBLE', @y);
put($def, 'GRID/Z', 'ZONE 1', 0, 'DBLE', @z);
put($def, 'GRID/ELEMENTS', 'ZONE 1', 0, 'INTR', @elements);
run('embed', $setup, $def);

run('ds', 'copy', $def, $res);
for my $step (10, 20, 30) {
    my $part = 1 - 2**(-$step / 10);
    my (@pressure, @velocity);
    for my $n (0 .. $#x) {
        my ($y, $z) = map { 2 * $_ / 0.1 - 1 } $y[$n], $z[$n];
        push @pressure, 12 * $part * (1 - $x[$n]);
        push @velocity, 2.25 * $part * (1 - $y * $y) * (1 - $z * $z);
    }
    put($res, 'PRESSURE', 'ZONE 1', $step, 'REAL', @pressure);
    put($res, 'VELOCITY X', 'ZONE 1', $step, 'REAL', @velocity);
}
