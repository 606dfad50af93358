# Handlers: what they are given, what they may do, and how they may fail.
use strict;
use warnings;

use Test::More;

use VEL::Parser::Lite;

my @warnings;
local $SIG{__WARN__} = sub { push @warnings, @_ };

sub died {
    my ($code) = @_;
    return eval { $code->(); 1 } ? 'lived' : $@ =~ s/ at \S+ line \d+\.\n\z//r;
}

sub loaded {
    my $data = VEL::Parser::Lite::NEW();
    $data->loadVELData([ 'FLOW:', 'A = 1', 'B = 2', 'END' ]);
    return $data;
}

sub text { return join ' ', map { $_ // 'undef' } @_ }

# What they are given.
{
    my $data = VEL::Parser::Lite::NEW();
    my @calls;
    is_deeply [ $data->addChangeHandler(sub { push @calls, text(@_) }) ], [], 'addChangeHandler returns nothing';
    $data->createObject('/FLOW', 0);
    $data->createParam('/FLOW/A', 'one');
    $data->setStringValue('/FLOW/A', 'two');
    $data->setStringValue('/FLOW/A', 'two');
    $data->createParam('/FLOW/A', 'three');
    $data->deleteParam('/FLOW/A');
    $data->deleteObj('/FLOW');
    is_deeply \@calls, [
        '/FLOW 1 undef undef',
        '/FLOW/A 0 one undef',
        '/FLOW/A 0 two one',
        '/FLOW/A 0 three two',
        '/FLOW/A 0 undef three',
        '/FLOW 2 undef undef',
    ], 'path, code, new value, old value';
    @calls = ();
    $data->loadVELData([ 'X: y', 'B = 1', 'END' ]);
    is_deeply \@calls, [ '/X:y 1 undef undef', '/X:y/B 0 1 undef' ], 'also during a parse';
}

# In scalar context, one value of which is not looked at.
{
    my $data = loaded();
    my @context;
    $data->addChangeHandler(sub { push @context, wantarray; return });
    $data->addChangeHandler(sub { push @context, wantarray; return (1, 2) });
    is $data->setStringValue('/FLOW/A', 'x'), undef, 'handlers that return nothing and two values';
    is_deeply \@context, [ '', '' ], '... are called in scalar context';
}

# Several, in order; added and taken away while they run.
{
    my $data = loaded();
    my @order;
    $data->addChangeHandler(sub { push @order, 'first'; return (1, 2, 3) });
    $data->addChangeHandler(sub { push @order, 'second'; return });
    $data->setStringValue('/FLOW/A', 'x');
    is "@order", 'first second', 'in the order in which they were added';
    is_deeply [ $data->clearChangeHandlers ], [], 'clearChangeHandlers returns nothing';
    $data->setStringValue('/FLOW/A', 'y');
    is "@order", 'first second', 'and the handlers are not called any more';

    @order = ();
    $data->addChangeHandler(sub {
            push @order, 'adding';
            $data->addChangeHandler(sub { push @order, 'added' });
    });
    $data->setStringValue('/FLOW/A', 'z');
    is "@order", 'adding', 'an added handler is called from the next change on';
    $data->setStringValue('/FLOW/A', 'a');
    is "@order", 'adding adding added', '... with the others';

    $data->clearChangeHandlers;
    @order = ();
    $data->addChangeHandler(sub { push @order, 'clearing'; $data->clearChangeHandlers });
    $data->addChangeHandler(sub { push @order, 'cleared' });
    is $data->setStringValue('/FLOW/A', 'b'), undef, 'a handler that removes all handlers';
    is "@order", 'clearing', '... is the last to be called';
    my $code = sub { push @order, 'kept' };
    $data->addChangeHandler($code);
    $code = 'changed';
    $data->setStringValue('/FLOW/A', 'c');
    is "@order", 'clearing kept', 'the reference is copied';
}

# They may use the database, and change it.
{
    my $data = loaded();
    my $depth = 0;
    $data->addChangeHandler(sub {
            my ($path, $code, $new) = @_;
            $data->getStringValue($path, \my $value);
            is $value, $new, "the new value of $path is in place";
            $data->setStringValue('/FLOW/B', $new + 1) if $new < 13;
    });
    is $data->setStringValue('/FLOW/A', 10), undef, 'a handler that changes other values';
    $data->getStringValue('/FLOW/B', \my $value);
    is $value, 13, '... is called for them in turn';
}
{
    my $data = loaded();
    my ($path, $value) = ('/FLOW/A', 'new' x 1000);
    $data->addChangeHandler(sub { $path = $value = 'z' x 100_000; undef $value; return });
    is $data->createParam($path, $value), undef, 'a handler that changes the arguments';
    $data->clearChangeHandlers;
    $data->getStringValue('/FLOW/A', \my $stored);
    ok $stored eq 'new' x 1000, '... comes too late';
}
{
    my $data = loaded();
    $data->addChangeHandler(sub { undef $data; return });
    is $data->setStringValue('/FLOW/A', 'x'), undef, 'a handler that drops the object';
    is $data, undef, '... which is freed when the operation has ended';
    $data = loaded();
    my $answer;
    $data->addChangeHandler(sub { $answer = $data->DESTROY() });
    is $data->setStringValue('/FLOW/A', 'x'), undef, 'a handler that destroys the object';
    is $answer, 'DESTROY: the object is in use', '... is refused';
    is $data->havePath('/FLOW/A'), 1, '... and the object stays';
}

# They may die.
{
    my $data = loaded();
    my @called;
    $data->addChangeHandler(sub { push @called, 1; die "no $_[2]\n" if ($_[2] // '') eq 'x'; return });
    $data->addChangeHandler(sub { push @called, 2 });
    is died(sub { $data->setStringValue('/FLOW/A', 'x') }), "no x\n", 'the error comes through';
    is "@called", '1', '... and no other handler is called';
    $data->getStringValue('/FLOW/A', \my $value);
    is $value, 'x', '... and the change stays';
    is died(sub { $data->setStringValue('/FLOW/A', 'y') }), 'lived', '... and the next call succeeds';
    is died(sub { $data->createParam('/FLOW/C', 'x') }), "no x\n", 'when making a parameter';
    is died(sub { $data->loadVELLine('D = x', 0) }), "no x\n", 'when parsing a line';
    is $data->loadVELLine('E = y', 0), undef, '... and no line is left pending';
    is died(sub { $data->loadVELData([ 'M: n', 'F = x', 'G = y', 'END' ]) }), "no x\n",
        'when parsing lines';
    is $data->havePath('/M:n/G'), 0, '... and the rest is not parsed';
    is $data->getVELState, 0, '... and no block stays open';
    is $data->getCurrentPath, '/', '... and the current path is as before';
    $data->clearChangeHandlers;
    $data->addChangeHandler(sub { die { code => 42 } });
    eval { $data->setStringValue('/FLOW/A', 'z') };
    is $@->{code}, 42, 'an error that is a reference';
    is died(sub { $data->deleteObj('/FLOW') }) =~ /^HASH/ ? 1 : 0, 1, 'when deleting';
    is died(sub { $data->createObject('/N', 0) }) =~ /^HASH/ ? 1 : 0, 1, 'when creating';
    $data->clearChangeHandlers;
    is $data->deleteObj('/'), undef, 'the tree is complete';
}
{
    my $data = loaded();
    my $inner;
    $data->addChangeHandler(sub {
            die "inner\n" if $_[0] eq '/FLOW/B';
            $inner = died(sub { $data->setStringValue('/FLOW/B', 'x') });
    });
    is died(sub { $data->setStringValue('/FLOW/A', 'x') }), 'lived', 'an error caught by a handler';
    is $inner, "inner\n", '... does not leave the handler';
    $data->clearChangeHandlers;
    $data->addChangeHandler('no code');
    like died(sub { $data->setStringValue('/FLOW/A', 'w') }), qr/^Undefined subroutine|no code/,
        'a handler that is not code';
}
{
    my $data = loaded();
    $data->addChangeHandler(sub { eval { die "inside\n" }; return });
    eval { die "before\n" };
    $data->setStringValue('/FLOW/A', 'x');
    is $@, "before\n", 'the error variable of the caller does not change';
}
{
    my $data = loaded();
    my $passed = 0;
    $data->addChangeHandler(sub { no warnings; last });
    for (1) {
        like died(sub { $data->setStringValue('/FLOW/A', 'x') }), qr/^Can't "last" outside a loop block/,
            'no way out into a loop of the caller';
        $passed++;
    }
    is $passed, 1, '... which continues';
}

# `exit` in a handler ends the program, when the database has finished.
{
    my $program = q{
        use VEL::Parser::Lite;
        my $data = VEL::Parser::Lite::NEW();
        $data->addChangeHandler(sub { exit 3 });
        END { print defined $data ? 'object ' : 'none ', $? }
        sub inner { my @kept = (1) x 1000; eval { $data->loadVELData([ 'A:', 'B = 1', 'END' ]) } }
        inner(sort { $a <=> $b } 3, 2, 1);
        print 'not reached';
    };
    open my $output, '-|', $^X, '-e', $program or die;
    my $text = do { local $/ = undef; readline $output };
    close $output;
    is $text, 'object 3', 'exit in a handler';
    is $? >> 8, 3, '... with its status';
}

# Actions.
{
    my $data = VEL::Parser::Lite::NEW();
    my @calls;
    is $data->invokeAction('save', undef), 'no handler was found for action line', 'no handler';
    is $data->registerActionHandler(sub { push @calls, join '|', @_; return 1 }), undef, 'registered';
    is $data->loadVELLine('>>  save   file.vel ', 0), undef, 'a line';
    is $data->loadVELLine('>save', 0), undef, 'a line with nothing after the word';
    is $data->invokeAction('save', [ 'a', 'b c', '', undef, 4 ]), undef, 'arguments';
    is $data->invokeAction('save', []), undef, 'an empty list';
    is $data->invokeAction('save', undef), undef, 'no list';
    is_deeply \@calls, [ 'save|file.vel', 'save|', 'save|a|b c|||4', 'save', 'save|' ], 'as given';

    @calls = ();
    is $data->registerActionHandler(sub { push @calls, 'new'; return 0 }), undef, 'another';
    is $data->invokeAction('x', undef), undef, '... whatever it returns';
    is "@calls", 'new', '... replaces the first';
    $data->registerActionHandler(sub { return 'no number' });
    is $data->invokeAction('x', undef), undef, '... also a text';
    $data->registerActionHandler(sub { return undef });
    is $data->invokeAction('x', undef), undef, '... also undef';

    {
        package Number;
        my $read = 0;
        use overload '0+' => sub { $read++; die "no number\n" if $read > 1; return 7 }, fallback => 1;
        sub times_read { return $read }
    }
    $data->registerActionHandler(sub { return bless [], 'Number' });
    is $data->invokeAction('x', undef), undef, '... also an object';
    is Number::times_read(), 1, '... which is read as a number';
    is died(sub { $data->invokeAction('x', undef) }), "no number\n", '... and may die while it is read';

    $data->registerActionHandler(sub { return });
    is died(sub { $data->invokeAction('x', undef) }),
        'Missing return value from call_sv on action handler', 'no value';
    $data->registerActionHandler(sub { return (1, 2) });
    is died(sub { $data->invokeAction('x', undef) }),
        'Too many return values from call_sv on action handler', 'two values';
    is died(sub { $data->loadVELLine('>x', 0) }),
        'Too many return values from call_sv on action handler', '... also for a line';
    $data->registerActionHandler(sub { die "not done\n" });
    is died(sub { $data->loadVELData([ 'A = 1', '> go', 'B = 2' ]) }), "not done\n", 'an error';
    is $data->havePath('/A') . $data->havePath('/B'), '10', '... stops the parse';

    $data->registerActionHandler(sub { $data->registerActionHandler(sub { 'other' }); return 1 });
    is $data->invokeAction('x', undef), undef, 'a handler that replaces itself';
    $data->registerActionHandler(sub { undef $data; return 1 });
    is $data->invokeAction('x', ['y']), undef, 'a handler that drops the object';
    is $data, undef, '... which is freed then';
}

# A handler that holds the object keeps it alive until it is taken away.
{
    package Counted;
    our @ISA = 'VEL::Parser::Lite';
    my $gone = 0;
    sub DESTROY { my $self = shift; $gone++; return $self->SUPER::DESTROY }
    sub gone { return $gone }
}
{
    my $data = bless VEL::Parser::Lite::NEW(), 'Counted';
    my $held = $data;
    $data->addChangeHandler(sub { $held });
    $data->clearChangeHandlers;
    undef $held;
    undef $data;
    is Counted::gone(), 1, 'removed handlers keep nothing alive';
}

is "@warnings", '', 'no warnings';

done_testing;
