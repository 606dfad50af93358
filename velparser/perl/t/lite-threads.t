# Several threads use the module, each with its own handles.
use strict;
use warnings;

use Config;
use FindBin;
use Scalar::Util ();
use lib "$FindBin::Bin/lib";
use Test::More;

BEGIN {
    plan skip_all => 'this perl has no threads' if !$Config{useithreads};
    require threads;
}

use VEL::Parser::Lite;

{
    package Cloned;
    our @ISA = 'VEL::Parser::Lite';
}

# A handle of its own whose handler dies: the error comes back to the thread in
# which it happened, and to no other.
sub work {
    my ($number) = @_;
    my $data = VEL::Parser::Lite::NEW();
    $data->addChangeHandler(sub { die "handler $number\n" if $_[0] eq '/BAD'; return });
    my @wrong;
    for my $round (1 .. 200) {
        my $died = eval { $data->createParam('/BAD', "$number $round"); 1 } ? 'lived' : $@;
        push @wrong, $died if $died ne "handler $number\n";
        my $error = $data->createParam('/GOOD', "$number $round");
        $data->getStringValue('/GOOD', \my $value);
        push @wrong, $error // $value if $error || $value ne "$number $round";
    }
    return join '|', @wrong;
}

my $data = VEL::Parser::Lite::NEW();
$data->createParam('/A', 'of the main thread');
my $derived = bless VEL::Parser::Lite::NEW(), 'Cloned';

# What a thread gives that runs this code.
sub in_thread { my ($code) = @_; return scalar threads->create({ context => 'scalar' }, $code)->join }

for my $object ($data, $derived) {
    is in_thread(sub { return eval { $object->havePath('/'); 1 } ? 'lived' : $@ =~ s/ at .*//sr }),
        'self is not of type VEL::Parser::Lite', 'an object is empty in another thread: ' . ref $object;
    is in_thread(sub { return $object->DESTROY // 'nothing' }), 'nothing', 'and may be destroyed there';
    is $object->havePath('/'), 0 + ($object == $data), 'which changes nothing in this thread';
}

my @threads = map { my $number = $_; threads->create({ context => 'scalar' }, sub { return work($number) }) } 1 .. 4;
is work(0), '', 'the main thread at the same time';
is $_->join, '', 'thread ' . $_->tid for @threads;

# A thread that ends in the middle of a handler's error leaves it to no one.
in_thread(sub {
        my $own = VEL::Parser::Lite::NEW();
        $own->addChangeHandler(sub { die "not removed\n" });
        eval { $own->createParam('/A', 1) };
        return;
});
$data->addChangeHandler(sub { return });
is eval { $data->createParam('/A', 'again'); 1 }, 1, 'the error of another thread is not raised here';
$data->getStringValue('/A', \my $value);
is $value, 'again', 'the database of the main thread is as it was';

my $below = in_thread(sub {
        my $outer = VEL::Parser::Lite::NEW();
        $outer->createParam('/A', 'outer');
        my $inner = in_thread(sub { return work(9) });
        $outer->getStringValue('/A', \my $kept);
        return "$inner$kept";
});
is $below, 'outer', 'a thread of a thread';

# The packages above the module: rules, units, findings.
require VELTest;
my $rules = "RULES:\nOBJECT: BOX\nFree Parameters = Yes\nPARAMETER: Size\nType = Real\nUnits = m\nEND\nEND\nEND";
my $check = sub {
    my %said;
    for my $number (1 .. 9) {
        my $database = VELTest::database($rules, "BOX: b\nSize = $number [ft^$number s]\nWide = 1\nEND");
        $said{ VELTest::findings($database, 1) =~ s/ft\^[0-9]+ s/unit/r }++;
    }
    return join '', %said;
};
my @checks = map { threads->create({ context => 'scalar' }, $check) } 1 .. 4;
my $checked = "/BOX:b/Size: Unit [unit] has the wrong dimension; use [m] or a compatible unit [wrong-unit]\n9";
is $_->join, $checked, 'data checked in thread ' . $_->tid for @checks;

# Reading the table of units again in each thread would cost half a megabyte a time.
my @addresses = map { in_thread(sub { VEL::Units::load(); return VEL::Units::system_address() }) } 1 .. 2;
is VEL::Units::system_address(), undef, 'the main thread has not loaded the unit system';
ok $addresses[0], 'other threads have';
is $addresses[1], $addresses[0], 'they share it';
is VEL::Units::convert(36, 'km h^-1', 'm s^-1'), 10, 'the main thread may use it, too';
is VEL::Units::system_address(), $addresses[0], 'and shares it';

# Here the packages are in use too, which refer to databases weakly.
my $used = VELTest::database($rules, "BOX: b\nSize = 1 [s]\nEND");
my $here = VELTest::findings($used, 1);
like $here, qr/Unit \[s\] has the wrong dimension/, 'data checked in the main thread';
Scalar::Util::weaken(my $weak = $used);
is in_thread($check), $checked, 'then in a new thread';
like in_thread(sub { return eval { VEL::Model->of($used); 1 } ? 'lived' : $@ }), qr/^self is not of type/,
    'which has no use for the model of another';
is in_thread(sub { undef $used; undef $weak; return 'done' }), 'done', 'nor for its references';
is VELTest::findings($used, 1), $here, 'the main thread continues';

done_testing;
